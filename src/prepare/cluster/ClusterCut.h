#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <gemmi/math.hpp>
#include <vector>

#include "foundation/Words.h"
#include "prepare/cluster/CrystalCell.h"
#include "prepare/cluster/SurfaceFrame.h"

namespace qvre {

enum class ClusterShape : std::uint8_t { kHemisphere, kParaboloid };

template <>
inline constexpr auto kWords<ClusterShape> = std::to_array<Word<ClusterShape>>(
    {{"hemisphere", ClusterShape::kHemisphere}, {"paraboloid", ClusterShape::kParaboloid}});

/// A crystal with a surface around one emitter.
struct HalfCrystal {
    const CrystalCell* cell = nullptr;
    gemmi::Mat33 rotation;    ///< into the frame of the surface, z outward
    CrystalBounds bounds;     ///< heights above the emitter, angstrom
    std::size_t emitter = 0;  ///< index in the cell
};

/// An atom of a crystal, whatever its place comes to.
struct SiteInCell {
    std::size_t site = 0;          ///< index in the cell
    std::array<int, 3> cell = {};  ///< which of the repeated cells
};

struct CutAtom {
    SiteInCell atom;       ///< the emitter in the cell (0, 0, 0)
    gemmi::Vec3 position;  ///< angstrom from the emitter
    double size = 0.0;     ///< of the smallest cluster that holds the atom, angstrom
};

struct ClusterCut {
    std::vector<CutAtom> atoms;  ///< emitter first, then by distance from it
    double size = 0.0;           ///< angstrom; that of the outermost shell
};

constexpr int kMostAtoms = 200000;

/// The size at which a cluster has a volume (cubic angstrom) below a surface at the height `top` above its
/// emitter.
double SizeOfVolume(ClusterShape shape, double volume, double top);

/// Cuts by size. The size of a hemisphere is its radius around the surface point above the emitter; that of a
/// paraboloid bounds the path emitter - atom - surface plane, |r| + (top - z), so that the emitter is its
/// focus and the surface plane its directrix.
///
/// Atoms whose sizes differ by less than 1e-4 angstrom are one shell and are taken or left together: the cut
/// then has every symmetry about the normal through the emitter that the half crystal has. A shell up to
/// 0.001 angstrom beyond `size` counts, for sizes copied with three digits. The emitter always belongs. Atoms
/// at equal squared distance (in steps of 1e-6 square angstrom) come in the order of their sites, then of
/// their cells. Throws ZfError when no other atom is within, or more than kMostAtoms.
ClusterCut CutBySize(const HalfCrystal& half, ClusterShape shape, double size);

/// The cluster of these atoms, in their order, wherever they are.
ClusterCut CutOfAtoms(const HalfCrystal& half, ClusterShape shape, const std::vector<SiteInCell>& atoms);

/// Stable order by distance from the emitter, of which those within 1e-6 square angstrom are equal.
void SortByDistance(std::vector<CutAtom>& atoms);

/// Cuts the whole shells whose number of atoms, emitter included, is nearest to `atoms`; of two equally near
/// the smaller.
ClusterCut CutByCount(const HalfCrystal& half, ClusterShape shape, int atoms);

}  // namespace qvre
