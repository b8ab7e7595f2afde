#include "prepare/atomic/BindingEnergies.h"

#include <QString>
#include <cstddef>
#include <vector>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFileQt.h"

BindingEnergies::BindingEnergies(const std::string& path) {
    ZfFileQt file(QString::fromStdString(path), "r");
    std::string text;
    file.ReadAll(text);
    std::vector<std::string> columns;
    for (const std::string& line : LineSplit(text)) {
        if (line[0] == '#') continue;
        const std::vector<std::string> fields = CommaSplit(line);
        if (columns.empty()) {
            columns = fields;
            continue;
        }
        if (fields.size() != columns.size())
            throw ZfError("The table of binding energies has a line that is none: " + line);
        for (std::size_t i = 1; i < fields.size(); ++i)
            if (!fields[i].empty()) energies_[fields[0]][columns[i]] = TextToDouble(fields[i]);
    }
}

std::optional<double> BindingEnergies::Find(const std::string& element, const CoreLevel& level) const {
    if (level.l == 0 || level.twiceJ > 0) return Entry(element, level.Name());
    const auto lower = Entry(element, CoreLevel{level.n, level.l, 2 * level.l - 1}.Name());
    const auto upper = Entry(element, CoreLevel{level.n, level.l, 2 * level.l + 1}.Name());
    if (!lower || !upper) return {};
    return (level.l * *lower + (level.l + 1) * *upper) / (2 * level.l + 1);
}

std::optional<double> BindingEnergies::Entry(const std::string& element, const std::string& column) const {
    const auto row = energies_.find(element);
    if (row == energies_.end()) return {};
    const auto entry = row->second.find(column);
    return entry == row->second.end() ? std::nullopt : std::optional(entry->second);
}
