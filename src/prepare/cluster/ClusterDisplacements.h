#pragma once

#include "input/Cluster.h"
#include "prepare/cluster/ClusterCut.h"
#include "prepare/cluster/ClusterRequest.h"

namespace qvre {

/// Replaces Uiso of the cell's atoms by the Debye formula of ZfDebye for the elements that the request names.
/// True when every atom has a displacement then. Throws ZfError when some have Debye temperatures and others
/// nothing, and for values that are no temperatures.
bool SettleDisplacements(ClusterRequest& request);

/// Gives each atom of the structure, made of this cut, the displacement of its site.
void SetDisplacements(const CrystalCell& cell, const ClusterCut& cut, Structure& structure);

}  // namespace qvre
