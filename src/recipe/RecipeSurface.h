#pragma once

#include "prepare/cluster/SurfaceStructure.h"
#include "recipe/RecipeFolder.h"
#include "recipe/RecipeTable.h"

namespace qvre {

/// The keys of [cluster] that make a surface differ from a crystal that is cut: [cluster.relax],
/// [[cluster.adsorbate]], domains = "symmetry" and domain-weights.
SurfaceStructure ReadSurfaceStructure(RecipeTable& cluster, const RecipeFolder& place);

}  // namespace qvre
