#include "prepare/thermal/DebyeTable.h"

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/StrictNumber.h"

namespace qvre {

DebyeTable::DebyeTable(const std::string& path) {
    Naming(path, [&] {
        const CommaTable table(ReadTextFile(path));
        const std::size_t element = table.Column("element");
        const std::size_t temperature = table.Column("debye_K");
        for (const std::vector<std::string>& row : table.rows)
            temperatures_[row[element]] = StrictNumber(row[temperature], row[element]);
    });
}

std::optional<double> DebyeTable::Find(const std::string& element) const {
    const auto found = temperatures_.find(element);
    if (found == temperatures_.end()) return std::nullopt;
    return found->second;
}

}  // namespace qvre
