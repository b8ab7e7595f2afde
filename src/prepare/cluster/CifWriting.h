#pragma once

#include <string>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// A crystal as CIF without symmetry, P 1, its coordinates to 10^-8 of the axes; of the axes the lengths and
/// angles are kept, not how they lie in space.
std::string CellAsCif(const CrystalCell& cell, const std::string& title);

}  // namespace qvre
