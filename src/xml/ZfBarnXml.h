#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/Matrices.h"
#include "xml/ZfBarnXmlRack.h"

class ZfADateTime;
class ZfFloatMatrix3D;

/// A document in the system's small XML dialect: elements and text values, no attributes, comments or checks.
///
/// Load and save are one code path. A document class has one exchange function a record, which calls the
/// operations below field by field: in mode "w" they write the field, in mode "r" they read it or take the
/// default. A rack that was read and closed is consumed, so that the next OpenRack of the same tag finds the
/// next element of that name; the tags of a record may stand in any order. Missing and unknown tags are no
/// failures.
///
/// A document is used by one thread. Failures are ZfError.
class ZfBarnXml {
public:
    explicit ZfBarnXml(const std::string& mode);  ///< "r" or "w"
    ZfBarnXml(const ZfBarnXml&) = delete;
    ZfBarnXml& operator=(const ZfBarnXml&) = delete;
    virtual ~ZfBarnXml() = default;

    std::string Mode() const { return writing_ ? "w" : "r"; }
    bool IsWriting() const { return writing_; }

    /// Builds the tree of a document text. Close tags are not compared with start tags, and more close tags
    /// than start tags leave the parser at the root.
    void Parse(std::string text);

    /// The document as text: the first top element and nothing else, each close tag followed by a line feed.
    std::string Document() const;
    /// The same, piece by piece.
    void WriteDocument(const std::function<void(std::string_view)>& write) const;

    /// Writing: appends an element and enters it. Reading: enters the first element of that name which is
    /// left.
    bool OpenRack(std::string_view tag);
    void CloseRack(std::string_view tag);  ///< throws if another rack is open
    void CloseRack();

    // Each exchanges one value under one tag. False when reading and the tag is absent.
    bool RawValue(std::string_view tag, std::string& value, const std::string& absent);  ///< no escapes
    void PutValue(std::string_view tag, std::string value);                              ///< writing alone
    bool Text(std::string_view tag, std::string& value, const std::string& absent);
    /// An absent tag leaves the variable as it is; a text that is neither "true" nor "false" gives
    /// `otherwise` and false.
    bool Bool(std::string_view tag, bool& value, bool otherwise);
    bool Int32(std::string_view tag, std::int32_t& value, std::int32_t absent);
    bool Int32(std::string_view tag, std::uint32_t& value, std::uint32_t absent);
    bool Float(std::string_view tag, float& value, float absent);
    bool Double(std::string_view tag, double& value, double absent);
    bool LDouble(std::string_view tag, double& value, double absent);
    bool DateTime(std::string_view tag, ZfADateTime& value);                ///< left as it is when absent
    bool DoubleList(std::string_view tag, std::vector<double>& list);       ///< appends
    bool StringList(std::string_view tag, std::vector<std::string>& list);  ///< replaces

    /// Format when writing: "t" text of 7 significant digits, "b" and "bb" all bits. Reading takes every
    /// form.
    bool Matrix(std::string_view tag, ZfDoubleMatrix& matrix, std::string_view format);
    bool Matrix(std::string_view tag, ZfFloatMatrix& matrix, std::string_view format);
    bool Matrix(std::string_view tag, ZfLDoubleMatrix& matrix, std::string_view format);
    /// In the rack that the caller has opened; "b" or "bb".
    bool Matrix3D(ZfFloatMatrix3D& matrix, std::string_view format);

    /// A list element of records, each with `bool Exchange(ZfBarnXml&, const std::string& tag)` that returns
    /// false when its tag is absent. Reading replaces the records, unless the list element is absent.
    template <class Record>
    bool RecordList(std::string_view listTag, const std::string& itemTag, std::vector<Record>& records);

    // For a progress display.
    enum Status : std::int32_t { kLoading = 0, kAnalyzing = 1, kReady = 2, kReadingList = 3 };
    std::string statusText;
    std::int32_t status = kLoading;
    std::int32_t listItem = 0;

private:
    ZfBarnXmlRack& NewRack(ZfBarnXmlRack& parent);
    std::string_view ValueOf(const ZfBarnXmlRack& rack) const;
    /// Reading: the value under the tag, which is consumed; false when absent.
    bool TakeValue(std::string_view tag, std::string_view& value);
    template <class Number, class ToText, class FromText>
    bool ExchangeNumber(std::string_view tag, Number& value, Number absent, ToText toText, FromText fromText);

    bool writing_;
    std::string text_;
    std::deque<ZfBarnXmlRack> pool_;
    ZfBarnXmlRack root_;
    ZfBarnXmlRack* current_ = &root_;
};

template <class Record>
bool ZfBarnXml::RecordList(std::string_view listTag, const std::string& itemTag,
                           std::vector<Record>& records) {
    if (!OpenRack(listTag)) return false;
    if (writing_) {
        for (Record& record : records) record.Exchange(*this, itemTag);
        CloseRack();
        return true;
    }
    status = kReadingList;
    records.clear();
    while (records.emplace_back().Exchange(*this, itemTag))
        listItem = static_cast<std::int32_t>(records.size()) - 1;
    records.pop_back();
    status = kReady;
    CloseRack();
    return true;
}
