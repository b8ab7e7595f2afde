#pragma once

#include <cstdint>
#include <string>
#include <vector>

class ZfBarnXml;

/// One message of the dialogue between an acquisition program and its instrument, as old image files keep it.
/// Fields are joined with "/":
///
///     command   command/object/value
///     reply     object/command/status/value/detail
///
/// so the first two swap in a reply. The detail alone may hold further "/"; the others have no escapes.
class ZfCRMsg {
public:
    enum Kind : std::int32_t { kUnknown = 0, kReply = 1, kCommand = 2 };

    ZfCRMsg() = default;
    ZfCRMsg(const ZfCRMsg&) = default;
    ZfCRMsg& operator=(const ZfCRMsg&) = default;
    virtual ~ZfCRMsg() = default;

    void SetFrom(const ZfCRMsg& other) { *this = other; }

    /// Three fields make a command, five or more a reply; else the kind is unknown and no field is stored.
    void ParseText(const std::string& text);
    std::string CommandText() const;
    std::string ReplyText() const;

    const std::string& GetCommand() const { return command; }
    const std::string& GetObject() const { return object; }
    const std::string& GetValue() const { return value; }
    const std::string& GetStatus() const;  ///< of a reply; throws a bare text for another kind
    const std::string& GetDetail() const;  ///< of a reply; throws a bare text for another kind

    /// Splits the value, "12.5mm" into 12.5 and "mm". False, 0 and an empty unit if it holds no number.
    bool GetNumericValue(double& number, std::string& unit) const;

    std::string command;
    std::string object;
    std::string value;
    std::string status;
    std::string detail;
    std::int32_t kind = kUnknown;
    std::int32_t code = -1;
};

/// A command with its reply.
struct ZfCRMsgPair {
    bool Exchange(ZfBarnXml& xml, const std::string& tag);

    ZfCRMsg command;
    ZfCRMsg reply;
};

struct ZfCRMsgList {
    /// False when the list is absent, which leaves the pairs as they are.
    bool Exchange(ZfBarnXml& xml, const std::string& tag);

    std::vector<ZfCRMsgPair> pairs;
};
