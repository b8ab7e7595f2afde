#include "report/compare/TableLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr std::string_view kBlanks = " \t\r\v\f";

std::string_view Trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) return {};
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

bool IsDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

void AddLine(std::vector<TableLine>& lines, int number, std::string_view text) {
    TableLine line{number, text, false};
    for (const std::string_view mark : {"#", "%", "!", "//"}) {
        const std::string_view trimmed = Trimmed(text);
        if (!trimmed.starts_with(mark)) continue;
        line.comment = true;
        line.text = trimmed.substr(mark.size());
    }
    line.text = line.text.substr(0, line.text.find('#'));
    line.text = line.text.substr(0, line.text.find_last_not_of(" \r\v\f") + 1);
    if (!Trimmed(line.text).empty()) lines.push_back(line);
}

/// Every comma stands between two digits, and blanks separate at least two numbers.
bool HasDecimalCommas(std::string_view line) {
    const std::string_view text = Trimmed(line);
    if (text.find_first_of(kBlanks) == std::string_view::npos) return false;
    bool within = false;  // a number that has its comma
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kBlanks.find(text[i]) != std::string_view::npos) within = false;
        if (text[i] != ',') continue;
        if (within || i == 0 || i + 1 == text.size() || !IsDigit(text[i - 1]) || !IsDigit(text[i + 1]))
            return false;
        within = true;
    }
    return true;
}

std::string Unquoted(std::string_view field) {
    field = Trimmed(field);
    if (field.size() > 1 && field.front() == '"' && field.back() == '"')
        field = Trimmed(field.substr(1, field.size() - 2));
    return std::string(field);
}

std::vector<std::string> SplitAtBlanks(std::string_view line) {
    std::vector<std::string> fields;
    std::size_t at = line.find_first_not_of(kBlanks);
    while (at < line.size()) {
        const bool quoted = line[at] == '"';
        std::size_t end = quoted ? line.find('"', at + 1) : line.find_first_of(kBlanks, at);
        if (end < line.size() && quoted) ++end;
        fields.push_back(Unquoted(line.substr(at, end - at)));
        at = line.find_first_not_of(kBlanks, end);
    }
    return fields;
}

bool IsMissing(const std::string& lower) {
    static constexpr std::array<std::string_view, 12> words = {"",  "nan", "-nan", "inf", "-inf", "+inf",
                                                               "-", "--",  "na",   "n/a", "null", "none"};
    return std::find(words.begin(), words.end(), lower) != words.end();
}

}  // namespace

std::vector<TableLine> TableLines(std::string_view text) {
    std::vector<TableLine> lines;
    int number = 0;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
        AddLine(lines, ++number, text.substr(0, end));
        const bool both = text.substr(end, 2) == "\r\n";
        text.remove_prefix(std::min(text.size(), end + (both ? 2 : 1)));
    }
    return lines;
}

const char* SeparatorName(Separator separator) {
    switch (separator) {
        case Separator::kTab:
            return "tabs";
        case Separator::kComma:
            return "commas";
        case Separator::kSemicolon:
            return "semicolons";
        case Separator::kBlanks:
            break;
    }
    return "blanks";
}

Separator SeparatorOf(std::string_view line) {
    if (line.find(';') != std::string_view::npos) return Separator::kSemicolon;
    if (line.find('\t') != std::string_view::npos) {
        const auto fields = SplitLine(line, Separator::kTab);
        const bool mixed = std::any_of(fields.begin(), fields.end(), [](const std::string& field) {
            const std::size_t next = field.find_first_not_of(kBlanks, field.find_first_of(kBlanks));
            return next < field.size() && next > 0 && (IsDigit(field[next]) || field[next] == '-') &&
                   !std::isalpha(static_cast<unsigned char>(field.front()));
        });
        return mixed ? Separator::kBlanks : Separator::kTab;
    }
    const bool comma = line.find(',') != std::string_view::npos;
    return comma && !HasDecimalCommas(line) ? Separator::kComma : Separator::kBlanks;
}

std::vector<std::string> SplitLine(std::string_view line, Separator separator) {
    if (separator == Separator::kBlanks) return SplitAtBlanks(line);
    const char mark = separator == Separator::kTab ? '\t' : separator == Separator::kComma ? ',' : ';';
    std::vector<std::string> fields;
    std::size_t begin = 0;
    bool quoted = false;
    for (std::size_t i = 0; i <= line.size(); ++i) {
        if (i < line.size() && line[i] == '"') quoted = !quoted;
        if (i < line.size() && (line[i] != mark || quoted)) continue;
        fields.push_back(Unquoted(line.substr(begin, i - begin)));
        begin = i + 1;
    }
    return fields;
}

std::optional<double> TableNumbers::Read(const std::string& field) {
    std::string text = field;
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (IsMissing(text)) return std::numeric_limits<double>::quiet_NaN();
    const std::size_t comma = text.find(',');
    if (comma != std::string::npos) text[comma] = '.';
    std::replace(text.begin(), text.end(), 'd', 'e');  // Fortran's 1.0D+02
    const char* begin = text.data() + (text.starts_with('+') ? 1 : 0);
    const char* end = text.data() + text.size();
    double value = 0.0;
    const auto [stop, status] = std::from_chars(begin, end, value);
    if (status != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
    const bool point = comma == std::string::npos && text.find('.') != std::string::npos;
    if (comma != std::string::npos && withComma_.empty()) withComma_ = field;
    if (point && withPoint_.empty()) withPoint_ = field;
    if (!withComma_.empty() && !withPoint_.empty())
        throw ZfError(
            fmt::format("\"{}\" has a comma and \"{}\" a point: write all numbers with one decimal "
                        "sign, and none between thousands",
                        withComma_, withPoint_));
    return value;
}

void FailAtLine(int number, const std::string& reason) {
    throw ZfError(fmt::format("line {}: {}", number, reason));
}

}  // namespace qvre
