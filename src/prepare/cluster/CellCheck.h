#pragma once

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Throws ZfError unless the cell holds atoms, all of known elements, spans a volume, and has no two atoms
/// within 0.5 angstrom, periodic images included.
void CheckCell(const CrystalCell& cell);

}  // namespace qvre
