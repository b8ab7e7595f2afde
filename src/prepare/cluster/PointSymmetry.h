#pragma once

#include <optional>
#include <string>
#include <vector>

#include "input/Cluster.h"

namespace qvre {

/// Symmetry of a structure about the z axis through the origin: one of the ten point groups of two
/// dimensions (International Tables for Crystallography A, section 10.1).
struct PointSymmetry {
    /// "4mm", "3m", "m", "2", "1", ...; "infinite" when all atoms stand on the axis.
    std::string Name() const;

    int order = 1;                     ///< of the rotation axis: 1, 2, 3, 4 or 6; 0: all atoms on it
    std::optional<double> mirror_deg;  ///< azimuth of a mirror plane, the smallest, from 0 on
};

/// Tries the operations on all atoms: each has to fall on one of the same element, within 0.01 angstrom.
PointSymmetry FindPointSymmetry(const std::vector<ClusterAtom>& atoms);

}  // namespace qvre
