#pragma once

#include "crystal/ZfCrystal.h"

namespace qvre {

/// Adds the ready crystals, built: "Cu" (face-centred cubic) and "Diamond", "Si", "Ge" and "alpha-Sn"
/// (diamond structure), with their cubic lattice constants at room temperature.
void AddCrystalPresets(ZfCrystalTable& table);

}  // namespace qvre
