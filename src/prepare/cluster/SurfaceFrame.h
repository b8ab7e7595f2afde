#pragma once

#include <array>
#include <cstddef>
#include <gemmi/math.hpp>
#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Atoms of equal height over the surface, within 0.01 angstrom. One plane stands for all that lie a multiple
/// of the frame's period from it.
struct AtomicPlane {
    double height = 0.0;             ///< angstrom along the normal, of its first atom
    std::vector<std::size_t> atoms;  ///< indices in the cell
};

/// Planes that count as one layer: each lies within the layer tolerance of the next.
struct AtomicLayer {
    std::size_t lowest = 0;   ///< plane of the frame
    std::size_t topmost = 0;  ///< counted on beyond the frame's planes when the layer reaches into the period
                              ///< above
};

constexpr double kSamePlane_angstrom = 0.01;  ///< the layer tolerance under which each plane is a layer

/// A crystal seen from its surface (h k l): z is the outward normal, along the reciprocal vector
/// h a* + k b* + l c*; x is the projection on the surface of the first of the axes a, b, c that is not along
/// the normal; y completes a right-handed frame.
struct SurfaceFrame {
    /// Throws ZfError for (0 0 0). Where no two planes are farther apart than the tolerance, nothing tells
    /// layers from each other and each plane is one.
    SurfaceFrame(const CrystalCell& cell, const std::array<int, 3>& hkl,
                 double layerTolerance_angstrom = kSamePlane_angstrom);

    /// Height of a plane that is counted on through the periods.
    double HeightOf(std::size_t plane) const;
    double GapAbove(std::size_t plane) const { return HeightOf(plane + 1) - HeightOf(plane); }

    /// The highest plane of a layer; both are counted on through the periods.
    std::size_t TopmostPlane(std::size_t layer) const;

    bool IsTopOfLayer(std::size_t plane) const {
        return layers[layerOf[plane % planes.size()]].topmost % planes.size() == plane % planes.size();
    }

    /// Rotates a position by an angle from x towards y, exactly for multiples of 90 degrees.
    gemmi::Mat33 RotatedBy(double angle_deg) const;

    gemmi::Mat33 rotation;             ///< rows are x, y, z
    double period = 0.0;               ///< angstrom, after which the planes repeat along z
    std::vector<AtomicPlane> planes;   ///< by height, within one period
    std::vector<std::size_t> planeOf;  ///< of each atom of the cell, index in `planes`
    std::vector<AtomicLayer> layers;   ///< by height of the lowest plane, within one period
    std::vector<std::size_t> layerOf;  ///< of each plane, index in `layers`
};

/// A wider gap between planes is the vacuum beside a slab.
constexpr double kVacuum_angstrom = 5.0;

/// Planes that bound the crystal of one emitter; heights are angstrom above it.
struct CrystalBounds {
    double top = 0.0;
    double bottom = 0.0;    ///< minus infinity for a crystal without an end
    std::size_t plane = 0;  ///< the topmost one, index in the frame
};

/// The bounds when `atom` is to lie in layer `layer`, counted from 1 at the surface over the layers of the
/// frame. A cell with a vacuum between planes is a slab: its surface is below the gap, and
/// nothing is returned when the atom's layer is another. Otherwise the layer fixes which plane ends the
/// crystal.
std::optional<CrystalBounds> BoundsForLayer(const SurfaceFrame& frame, std::size_t atom, int layer);

std::string SurfaceName(const CrystalCell& cell, const std::array<int, 3>& hkl);  ///< "TiO2(110)"

/// The elements of some atoms of the cell in alphabetical order, such as "O Ti".
std::string ElementsOf(const CrystalCell& cell, const std::vector<std::size_t>& atoms);

/// The layer of an atom in a slab; nothing for a crystal without a gap.
std::optional<int> LayerInSlab(const SurfaceFrame& frame, std::size_t atom);

}  // namespace qvre
