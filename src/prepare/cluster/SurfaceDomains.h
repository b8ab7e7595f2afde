#pragma once

#include <gemmi/math.hpp>
#include <vector>

#include "prepare/cluster/CellSymmetry.h"
#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// What an operation does to a vector.
gemmi::Mat33 MatrixOf(const SurfaceOperation& operation);

/// The orientations in which a surface structure lies on its substrate: one for each set of operations of
/// the substrate that those of the structure do not join. Both cells have their surface along the third axis
/// and share their Cartesian axes. Operations join the structure when they bring its atoms to each other
/// within the tolerance. The first domain is the identity.
std::vector<ClusterDomain> DomainsOf(const CrystalCell& substrate, const CrystalCell& structure,
                                     double tolerance_angstrom = CellSymmetry::kSamePlace_angstrom);

}  // namespace qvre
