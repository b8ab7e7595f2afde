#pragma once

#include "prepare/cluster/SurfaceSlab.h"
#include "prepare/cluster/SurfaceStructure.h"

namespace qvre {

/// How many layers a relaxation names.
int LayersIn(const Relaxation& relaxation);

/// Spacings, shifts, rumpling and lateral shifts of whole layers. Throws ZfError for layers and elements that
/// the slab does not have, and for layers that would come to lie on each other.
void RelaxLayers(const Relaxation& relaxation, SurfaceSlab& slab);

/// Moves single atoms and those equal to them by the plane group of the slab as it is. Throws ZfError for a
/// selection that matches nothing and a move that the symmetry of its atom does not allow.
void MoveAtoms(const Relaxation& relaxation, const SurfaceLattice& unitCell, SurfaceSlab& slab);

}  // namespace qvre
