#include "prepare/attenuation/ValenceElectrons.h"

#include <cstddef>
#include <vector>

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"

namespace qvre {

ValenceElectrons::ValenceElectrons(const std::string& path) {
    Naming(path, [&] {
        const CommaTable table(ReadTextFile(path));
        const std::size_t element = table.Column("element");
        const std::size_t electrons = table.Column("electrons");
        for (const std::vector<std::string>& row : table.rows)
            electrons_[row[element]] = StrictNumber(row[electrons], row[element]);
    });
}

double ValenceElectrons::Of(const std::string& element) const {
    const auto found = electrons_.find(element);
    if (found == electrons_.end())
        throw ZfError("The table has no number of valence electrons of " + element +
                      ": give the mean free path as a length");
    return found->second;
}

}  // namespace qvre
