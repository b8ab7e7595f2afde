#include "image/ZfCRMsg.h"

#include <algorithm>
#include <string_view>

#include "foundation/Text.h"
#include "xml/ZfBarnXml.h"

using namespace qvre;

namespace {

constexpr std::size_t kCommandFields = 3;
constexpr std::size_t kReplyFields = 5;

/// The fields of a message; behind the fourth "/" all is one field.
std::vector<std::string> Fields(std::string_view text) {
    std::vector<std::string> fields;
    std::size_t slash = text.find('/');
    while (slash != std::string_view::npos && fields.size() + 1 < kReplyFields) {
        fields.emplace_back(text.substr(0, slash));
        text.remove_prefix(slash + 1);
        slash = text.find('/');
    }
    fields.emplace_back(text);
    return fields;
}

ZfCRMsg ReadMessage(ZfBarnXml& xml, std::string_view tag) {
    std::string text;
    ZfCRMsg message;
    xml.Text(tag, text, "");
    message.ParseText(text);
    return message;
}

}  // namespace

void ZfCRMsg::ParseText(const std::string& text) {
    const std::vector<std::string> fields = Fields(text);
    kind = kUnknown;
    if (fields.size() == kCommandFields) {
        kind = kCommand;
        command = fields[0];
        object = fields[1];
        value = fields[2];
    } else if (fields.size() == kReplyFields) {
        kind = kReply;
        object = fields[0];
        command = fields[1];
        status = fields[2];
        value = fields[3];
        detail = fields[4];
    }
}

std::string ZfCRMsg::CommandText() const {
    return command + "/" + object + "/" + value;
}

std::string ZfCRMsg::ReplyText() const {
    return object + "/" + command + "/" + status + "/" + value + "/" + detail;
}

const std::string& ZfCRMsg::GetStatus() const {
    if (kind != kReply) throw "Illigal Message Access.";
    return status;
}

const std::string& ZfCRMsg::GetDetail() const {
    if (kind != kReply) throw "Illigal Message Access.";
    return detail;
}

bool ZfCRMsg::GetNumericValue(double& number, std::string& unit) const {
    if (!NumberSplit(value, number, unit)) return false;
    // Read anew without the unit, into which the splitter's number can reach: "E=700eV" is no exponent.
    const std::string_view head = std::string_view(value).substr(0, value.size() - unit.size());
    number = TextToDouble(head.substr(std::min(head.find_first_of("+-0123456789."), head.size())));
    return true;
}

bool ZfCRMsgPair::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return false;
    if (xml.IsWriting()) {
        std::string commandText = command.CommandText();
        std::string replyText = reply.ReplyText();
        if (command.kind == ZfCRMsg::kCommand) xml.Text("Cmd", commandText, "");
        if (reply.kind == ZfCRMsg::kReply) xml.Text("Rply", replyText, "");
    } else {
        command = ReadMessage(xml, "Cmd");
        reply = ReadMessage(xml, "Rply");
    }
    xml.CloseRack(tag);
    return true;
}

bool ZfCRMsgList::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return false;
    const bool found = xml.RecordList("ListMsgCmdRply", "mg", pairs);
    xml.CloseRack(tag);
    return found;
}
