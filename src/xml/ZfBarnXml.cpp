#include "xml/ZfBarnXml.h"

#include <array>
#include <utility>

#include "foundation/Text.h"
#include "foundation/ZfADateTime.h"
#include "foundation/ZfError.h"

using namespace qvre;

namespace {

constexpr std::array<std::pair<std::string_view, char>, 4> kEscapes = {
    {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}}};

/// Ends a list of strings; a stored string of this text ends its list early.
const std::string kEndOfStrings = "ThisIsEndString[]";

std::string Escape(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        std::string_view piece(&c, 1);
        for (const auto& [escape, plain] : kEscapes)
            if (c == plain) piece = escape;
        result += piece;
    }
    return result;
}

std::string Unescape(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        std::size_t taken = 1;
        char c = text.front();
        if (c == '&') {
            for (const auto& [escape, plain] : kEscapes) {
                if (!text.starts_with(escape)) continue;
                taken = escape.size();
                c = plain;
            }
        }
        result += c;
        text.remove_prefix(taken);
    }
    return result;
}

bool IsWriteMode(const std::string& mode) {
    if (mode != "r" && mode != "w") throw ZfError("IlligalMode");
    return mode == "w";
}

}  // namespace

ZfBarnXml::ZfBarnXml(const std::string& mode) : writing_(IsWriteMode(mode)) {}

ZfBarnXmlRack& ZfBarnXml::NewRack(ZfBarnXmlRack& parent) {
    ZfBarnXmlRack& rack = pool_.emplace_back();
    parent.Append(rack);
    return rack;
}

void ZfBarnXml::Parse(std::string text) {
    text_ = std::move(text);
    const std::string_view all = text_;
    std::size_t position = 0;
    while (true) {
        const std::size_t open = all.find('<', position);
        if (open == std::string_view::npos) break;
        const std::size_t end = all.find('>', open + 1);
        if (end == std::string_view::npos) throw ZfError("Illigal Tag Structure");
        position = end + 1;
        if (all[open + 1] == '?') continue;
        if (all[open + 1] == '/') {
            current_->close = open;
            if (current_->parent) current_ = current_->parent;
            continue;
        }
        const std::string_view tag = all.substr(open + 1, end - open - 1);
        ZfBarnXmlRack& rack = NewRack(*current_);
        rack.name = tag.substr(0, tag.find(' '));
        rack.startEnd = end;
        if (all[end - 1] == '/')
            rack.close = end;
        else
            current_ = &rack;
    }
    current_ = &root_;
}

std::string ZfBarnXml::Document() const {
    std::string text;
    WriteDocument([&](std::string_view piece) { text += piece; });
    return text;
}

void ZfBarnXml::WriteDocument(const std::function<void(std::string_view)>& write) const {
    const ZfBarnXmlRack* top = root_.firstChild;
    const ZfBarnXmlRack* rack = top;
    while (rack) {
        for (const std::string_view piece : {std::string_view("<"), rack->name, std::string_view(">")})
            write(piece);
        write(rack->value);
        if (rack->firstChild) {
            rack = rack->firstChild;
            continue;
        }
        // Close this element and all those that end with it, then go on with the next one.
        while (true) {
            for (const std::string_view piece : {std::string_view("</"), rack->name, std::string_view(">\n")})
                write(piece);
            if (rack == top) return;
            if (rack->next) break;
            rack = rack->parent;
        }
        rack = rack->next;
    }
}

bool ZfBarnXml::OpenRack(std::string_view tag) {
    if (writing_) {
        ZfBarnXmlRack& rack = NewRack(*current_);
        rack.ownName = tag;
        rack.name = rack.ownName;
        current_ = &rack;
        return true;
    }
    for (ZfBarnXmlRack* rack = current_->firstChild; rack; rack = rack->next) {
        if (rack->name != tag) continue;
        current_ = rack;
        return true;
    }
    return false;
}

void ZfBarnXml::CloseRack(std::string_view tag) {
    if (current_ != &root_ && current_->name != tag)
        throw ZfError("Invalid Tag Name:" + std::string(current_->name) + " <> " + std::string(tag));
    CloseRack();
}

void ZfBarnXml::CloseRack() {
    if (current_ == &root_) throw ZfError("Over CloseRack");
    ZfBarnXmlRack& closed = *current_;
    current_ = closed.parent;
    if (!writing_) current_->Remove(closed);
}

/// All between the tags. A self-closed element comes to a length of -1, which means to the end of the text;
/// an element that was never closed has no value.
std::string_view ZfBarnXml::ValueOf(const ZfBarnXmlRack& rack) const {
    if (rack.close == ZfBarnXmlRack::kNoPosition) return {};
    const std::size_t begin = rack.startEnd + 1;
    return std::string_view(text_).substr(
        begin, rack.close == rack.startEnd ? std::string_view::npos : rack.close - begin);
}

bool ZfBarnXml::TakeValue(std::string_view tag, std::string_view& value) {
    if (!OpenRack(tag)) return false;
    value = ValueOf(*current_);
    CloseRack();
    return true;
}

void ZfBarnXml::PutValue(std::string_view tag, std::string value) {
    OpenRack(tag);
    current_->value = std::move(value);
    CloseRack();
}

bool ZfBarnXml::RawValue(std::string_view tag, std::string& value, const std::string& absent) {
    if (writing_) {
        PutValue(tag, value);
        return true;
    }
    std::string_view text;
    const bool found = TakeValue(tag, text);
    value = found ? std::string(text) : absent;
    return found;
}

bool ZfBarnXml::Text(std::string_view tag, std::string& value, const std::string& absent) {
    if (writing_) {
        PutValue(tag, Escape(value));
        return true;
    }
    std::string_view text;
    const bool found = TakeValue(tag, text);
    value = found ? Unescape(text) : absent;
    return found;
}

bool ZfBarnXml::Bool(std::string_view tag, bool& value, bool otherwise) {
    if (writing_) {
        PutValue(tag, value ? "true" : "false");
        return true;
    }
    std::string_view text;
    if (!TakeValue(tag, text)) return false;
    const bool known = text == "true" || text == "false";
    value = known ? text == "true" : otherwise;
    return known;
}

template <class Number, class ToText, class FromText>
bool ZfBarnXml::ExchangeNumber(std::string_view tag, Number& value, Number absent, ToText toText,
                               FromText fromText) {
    if (writing_) {
        PutValue(tag, toText(value));
        return true;
    }
    std::string_view text;
    const bool found = TakeValue(tag, text);
    value = found ? fromText(text) : absent;
    return found;
}

bool ZfBarnXml::Int32(std::string_view tag, std::int32_t& value, std::int32_t absent) {
    return ExchangeNumber(tag, value, absent, IntToText, TextToInt);
}

bool ZfBarnXml::Int32(std::string_view tag, std::uint32_t& value, std::uint32_t absent) {
    return ExchangeNumber(tag, value, absent, IntToText, TextToUnsigned);
}

bool ZfBarnXml::Float(std::string_view tag, float& value, float absent) {
    return ExchangeNumber(tag, value, absent, FloatToText, TextToFloat);
}

bool ZfBarnXml::Double(std::string_view tag, double& value, double absent) {
    return ExchangeNumber(tag, value, absent, DoubleToText, TextToDouble);
}

bool ZfBarnXml::LDouble(std::string_view tag, double& value, double absent) {
    return Double(tag, value, absent);
}

bool ZfBarnXml::DateTime(std::string_view tag, ZfADateTime& value) {
    if (writing_) {
        PutValue(tag, value.ToText());
        return true;
    }
    std::string_view text;
    if (!TakeValue(tag, text)) return false;
    value.FromText(std::string(text));
    return true;
}

bool ZfBarnXml::DoubleList(std::string_view tag, std::vector<double>& list) {
    if (!OpenRack(tag)) return false;
    if (writing_) {
        for (double& value : list) LDouble("i", value, 0.0);
    } else {
        double value = 0.0;
        while (LDouble("i", value, 0.0)) list.push_back(value);
    }
    CloseRack();
    return true;
}

bool ZfBarnXml::StringList(std::string_view tag, std::vector<std::string>& list) {
    if (!OpenRack(tag)) return false;
    if (writing_) {
        for (std::string& text : list) Text("r", text, kEndOfStrings);
    } else {
        list.clear();
        std::string text;
        for (Text("r", text, kEndOfStrings); text != kEndOfStrings; Text("r", text, kEndOfStrings))
            list.push_back(text);
    }
    CloseRack();
    return true;
}
