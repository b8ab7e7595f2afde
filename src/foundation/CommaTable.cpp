#include "foundation/CommaTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr std::string_view kBlanks = " \t\r";

/// The field from `begin` to `end`, without the blanks at its end.
std::string Field(std::string_view line, std::size_t begin, std::size_t end) {
    const std::string_view field = line.substr(begin, end - begin);
    return std::string(field.substr(0, field.find_last_not_of(kBlanks) + 1));
}

std::vector<std::string> Fields(std::string_view line) {
    std::vector<std::string> fields;
    std::size_t at = std::min(line.find_first_not_of(kBlanks), line.size());
    while (at < line.size()) {
        const std::size_t end = std::min(line.find(',', at), line.size());
        fields.push_back(Field(line, at, end));
        if (end == line.size()) break;
        at = std::min(line.find_first_not_of(kBlanks, end + 1), line.size());
        if (at == line.size()) fields.emplace_back();
    }
    return fields;
}

}  // namespace

void ForEachTableLine(const std::string& text,
                      const std::function<void(const std::vector<std::string>&)>& take) {
    std::istringstream lines(text);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        const auto fields = Fields(std::string_view(line).substr(0, line.find('#')));
        if (fields.empty()) continue;
        try {
            take(fields);
        } catch (ZfError& error) {
            error.message = fmt::format("line {}: {}", number, error.message);
            throw;
        }
    }
}

CommaTable::CommaTable(const std::string& text) {
    ForEachTableLine(text, [this](const std::vector<std::string>& fields) {
        if (titles.empty()) {
            titles = fields;
            return;
        }
        if (fields.size() != titles.size())
            throw ZfError(
                fmt::format("it has {} fields and the title line {}", fields.size(), titles.size()));
        rows.push_back(fields);
    });
}

CommaTable CommaTable::Load(const std::string& path) {
    return Naming(path, [&] { return CommaTable(ReadTextFile(path)); });
}

std::optional<std::size_t> CommaTable::Find(const std::string& title) const {
    const auto found = std::find(titles.begin(), titles.end(), title);
    if (found == titles.end()) return std::nullopt;
    return static_cast<std::size_t>(found - titles.begin());
}

std::size_t CommaTable::Column(const std::string& title) const {
    if (const auto column = Find(title)) return *column;
    throw ZfError(fmt::format("it has no column {}", title));
}

}  // namespace qvre
