#include "prepare/atomic/BindingEnergies.h"

#include <cstddef>
#include <vector>

#include "foundation/CommaTable.h"
#include "foundation/Text.h"

namespace qvre {

BindingEnergies::BindingEnergies(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    for (const std::vector<std::string>& row : table.rows)
        for (std::size_t i = 1; i < row.size(); ++i)
            if (!row[i].empty()) energies_[row[0]][table.titles[i]] = TextToDouble(row[i]);
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

}  // namespace qvre
