#include "scattering/SamplingSphere.h"

#include <algorithm>

#include "foundation/ZfError.h"
#include "scattering/ZfExpansionGrid.h"
#include "scattering/ZfFreeElectron.h"

namespace qvre {

double LastSamplingRadius(std::int32_t lSize, double energy_eV) {
    if (lSize <= 0 || !(energy_eV > 0.0))
        throw ZfError("A sampling sphere needs an l size and a kinetic energy above 0");
    ZfExpansionGrid grid;
    grid.lSize = lSize;
    grid.BuildGrid();
    ZfFreeElectron electron;
    electron.SetEnergy_eV(energy_eV);
    return *std::max_element(grid.groupKr.begin(), grid.groupKr.end()) / electron.k;
}

}  // namespace qvre
