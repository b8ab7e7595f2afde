#pragma once

#include <array>
#include <cstddef>
#include <gemmi/math.hpp>
#include <optional>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Atoms of equal height over the surface, within 0.01 angstrom. One plane stands for all that lie a multiple
/// of the frame's period from it.
struct AtomicPlane {
    double height = 0.0;             ///< angstrom along the normal, of its first atom
    std::vector<std::size_t> atoms;  ///< indices in the cell
};

/// A crystal seen from its surface (h k l): z is the outward normal, along the reciprocal vector
/// h a* + k b* + l c*; x is the projection on the surface of the first of the axes a, b, c that is not along
/// the normal; y completes a right-handed frame.
struct SurfaceFrame {
    /// Throws ZfError for (0 0 0).
    SurfaceFrame(const CrystalCell& cell, const std::array<int, 3>& hkl);

    /// Rotates a position by an angle from x towards y, exactly for multiples of 90 degrees.
    gemmi::Mat33 RotatedBy(double angle_deg) const;

    gemmi::Mat33 rotation;             ///< rows are x, y, z
    double period = 0.0;               ///< angstrom, after which the planes repeat along z
    std::vector<AtomicPlane> planes;   ///< by height, within one period
    std::vector<std::size_t> planeOf;  ///< of each atom of the cell, index in `planes`
};

/// Planes that bound the crystal of one emitter; heights are angstrom above it.
struct CrystalBounds {
    double top = 0.0;
    double bottom = 0.0;    ///< minus infinity for a crystal without an end
    std::size_t plane = 0;  ///< the topmost one, index in the frame
};

/// The bounds when `atom` is to lie in layer `layer`, counted from 1 at the surface and over all planes. A
/// cell with a gap of more than 5 angstrom between planes is a slab: its surface is below the gap, and
/// nothing is returned when the atom's layer is another. Otherwise the layer fixes which plane ends the
/// crystal.
std::optional<CrystalBounds> BoundsForLayer(const SurfaceFrame& frame, std::size_t atom, int layer);

/// The layer of an atom in a slab; nothing for a crystal without a gap.
std::optional<int> LayerInSlab(const SurfaceFrame& frame, std::size_t atom);

}  // namespace qvre
