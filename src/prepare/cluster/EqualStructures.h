#pragma once

#include <vector>

#include "input/Cluster.h"

namespace qvre {

/// Whether two clusters have the same atoms with the same displacements at the same places, within a
/// tolerance, in any order.
bool HaveSameAtoms(const std::vector<ClusterAtom>& a, const std::vector<ClusterAtom>& b,
                   double tolerance_angstrom);

}  // namespace qvre
