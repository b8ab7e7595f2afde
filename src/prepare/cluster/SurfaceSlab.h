#pragma once

#include <array>
#include <string>
#include <vector>

#include "prepare/cluster/CrystalCell.h"
#include "prepare/cluster/Superstructure.h"
#include "prepare/cluster/SurfaceFrame.h"
#include "prepare/cluster/Terminations.h"

namespace qvre {

struct SlabAtom {
    std::string element;
    gemmi::Vec3 position;  ///< angstrom in the frame of the surface
    double Uiso_angstrom2 = 0.0;
    int layer = 0;  ///< from 1, the topmost of the substrate; 0: an adsorbate
};

/// The topmost layers of a crystal in a cell of its surface. An atom of the topmost plane is at the origin.
struct SurfaceSlab {
    int Layers() const { return atoms.empty() ? 0 : atoms.back().layer; }

    /// Height of the highest nucleus of the substrate, angstrom.
    double Top() const;

    /// Brings a vector to the shortest of those that differ by translations of the surface.
    gemmi::Vec3 Shortest(const gemmi::Vec3& v) const;

    SurfaceLattice lattice;
    std::vector<SlabAtom> atoms;  ///< from above
};

/// The fractions along two vectors in the surface that lead to the place of a vector; its height does not
/// count.
gemmi::Vec3 FractionsOf(const gemmi::Vec3& v, const SurfaceLattice& lattice);

/// The smallest translations of a surface: a1 the shortest, of equal ones that nearest to x; a2 the shortest
/// that is not along it, counter-clockwise from it, of equal ones that of the largest angle. So they are at
/// 90 degrees on fcc(001), at 120 on fcc(111), and a1 is along the close-packed rows of fcc(110). Throws
/// ZfError for surfaces of very high indices.
SurfaceLattice LatticeOfSurface(const CrystalCell& cell, const SurfaceFrame& frame);

/// One atom of a slab as a site of the crystal's cell.
struct SlabSite {
    std::size_t site = 0;  ///< index in the cell
    gemmi::Vec3 offset;    ///< translation of the crystal, in fractions
    int layer = 1;         ///< from 1, the topmost
};

/// Which atoms of a crystal a slab has and which translations, whatever its lengths and coordinates are.
struct SlabSites {
    std::array<gemmi::Vec3, 2> lattice;  ///< in fractions
    std::vector<SlabSite> atoms;         ///< from above
};

/// The layers of a crystal below a termination, down to a depth (angstrom) and at least so many; all of a
/// cell with a vacuum.
SlabSites SitesBelow(const CrystalCell& cell, const std::array<int, 3>& hkl, const SurfaceFrame& frame,
                     const Termination& termination, double depth_angstrom, int leastLayers);

/// The slab of these sites in a crystal, which may have other lengths and coordinates than that in which they
/// were found.
SurfaceSlab SlabOf(const CrystalCell& cell, const std::array<int, 3>& hkl, const SlabSites& sites);

/// Both at once.
SurfaceSlab SlabBelow(const CrystalCell& cell, const std::array<int, 3>& hkl, const SurfaceFrame& frame,
                      const Termination& termination, double depth_angstrom, int leastLayers);

/// The slab in a larger cell.
SurfaceSlab Repeated(const SurfaceSlab& slab, const Superstructure& superstructure);

/// The slab between vacuum, its surface along the third axis, as a crystal.
CrystalCell CellOf(const SurfaceSlab& slab);

}  // namespace qvre
