#pragma once

#include <string>

#include "prepare/cluster/SurfaceSlab.h"

namespace qvre {

/// A place over the (1x1) cell of a surface by its name, found from the atoms of the topmost layer:
/// - top: over the atom at the origin;
/// - bridge: half-way between two nearest ones; long-bridge: between the next nearest, with no other as near;
/// - hollow: as far as possible from all of them; fcc and hcp: such a place between three, with no atom of
///   the second layer below it (fcc) or with one (hcp).
/// Of places that are equal that nearest to the origin, then to x. Throws ZfError, with the names that serve,
/// where the surface has no such place or hollows of both kinds.
gemmi::Vec3 SitePlace(const SurfaceSlab& slab, const std::string& name);

}  // namespace qvre
