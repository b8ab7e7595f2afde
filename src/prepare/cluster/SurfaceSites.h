#pragma once

#include <cstddef>
#include <gemmi/math.hpp>
#include <string>
#include <vector>

#include "prepare/cluster/SurfaceSlab.h"

namespace qvre {

/// A place over a surface by atoms of the topmost layer: over the one, half-way between the two, or as far
/// from each of the three.
struct SurfaceSite {
    struct Corner {
        std::size_t atom = 0;  ///< index in the slab
        int i = 0;             ///< cell of the surface
        int j = 0;
    };

    /// Where the atoms of a slab have it, at the height 0. Throws ZfError for three in a row.
    gemmi::Vec3 PlaceOn(const SurfaceSlab& slab) const;

    std::vector<Corner> corners;
};

/// A site over the (1x1) cell of a surface by its name, found from the atoms of the topmost layer:
/// - top, or atop: over the atom at the origin;
/// - bridge: half-way between two nearest ones; long-bridge: between the next nearest, with no other as near;
/// - hollow: as far as possible from all of them; fcc and hcp: such a place between three, with no atom of
///   the second layer below it (fcc) or with one (hcp).
/// Of places that are equal that nearest to the origin, then to x. Throws ZfError, with the names that serve,
/// where the surface has no such place or hollows of both kinds.
SurfaceSite FindSite(const SurfaceSlab& slab, const std::string& name);

/// Its place.
gemmi::Vec3 SitePlace(const SurfaceSlab& slab, const std::string& name);

}  // namespace qvre
