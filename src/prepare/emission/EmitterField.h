#pragma once

#include <string>

#include "input/Cluster.h"
#include "prepare/emission/Emission.h"
#include "prepare/phases/PhaseShifts.h"

namespace qvre {

/// The emitter of a cluster, the atom at the origin. Throws ZfError when a structure has none within 0.01
/// angstrom, or when two structures have emitters of different name or element.
ClusterAtom EmitterOf(const Cluster& cluster);

/// The muffin-tin field of the species called `name` at the kinetic energy of the request, by the same
/// physics as its phase shifts. Returns the muffin-tin zero in eV. Throws ZfError for an unknown name, and
/// for surroundings that leave the muffin-tin zero open.
double SetCrystalField(EmissionRequest& request, const PhaseShiftRequest& crystal, const std::string& name,
                       const ScreeningTable& table);

}  // namespace qvre
