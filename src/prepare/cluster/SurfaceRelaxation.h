#pragma once

#include <cstddef>
#include <gemmi/math.hpp>
#include <vector>

#include "prepare/cluster/SurfaceSlab.h"
#include "prepare/cluster/SurfaceStructure.h"

namespace qvre {

/// How many layers a relaxation names.
int LayersIn(const Relaxation& relaxation);

/// Spacings, shifts, rumpling and lateral shifts of whole layers. Throws ZfError for layers and elements that
/// the slab does not have, and for layers that would come to lie on each other.
void RelaxLayers(const Relaxation& relaxation, SurfaceSlab& slab);

/// An atom that a move takes along, with what turns the move into its own.
struct MovedAtom {
    std::size_t atom = 0;  ///< index in the slab
    gemmi::Mat33 turn;
};

/// The atoms of a move: that which it names and those equal to it by the plane group of the slab as it is. An
/// atom on a symmetry element is there with each turn that keeps it. Throws ZfError for a selection that
/// matches nothing.
std::vector<MovedAtom> FindMoved(const AtomMove& move, const SurfaceLattice& unitCell,
                                 const SurfaceSlab& slab);

/// Displaces the atoms of all moves, `moved` for each. Throws ZfError for a move that the symmetry of its
/// atom does not allow.
void MoveAtoms(const std::vector<AtomMove>& moves, const std::vector<std::vector<MovedAtom>>& moved,
               SurfaceSlab& slab);

}  // namespace qvre
