#pragma once

#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/SurfaceStructure.h"

namespace qvre {

/// Builds a surface and gives the request for clusters of it: a slab in a cell of the surface, thick enough
/// for the clusters asked for, between vacuum, with its layers relaxed and the adsorbates on it. The axes x
/// and y stay those of the crystal that was cut. What was built is told in the remarks: the cell, coverage,
/// bonds that are shorter than usual, and domains that the request leaves out. An empty structure leaves the
/// request as it is. Throws ZfError for what does not fit the surface, and for atoms that collide.
ClusterRequest OnBuiltSurface(const ClusterRequest& request, const SurfaceStructure& structure);

}  // namespace qvre
