#pragma once

#include <cstddef>
#include <gemmi/math.hpp>
#include <vector>

#include "prepare/cluster/CellGrid.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// An operation of the crystal's space group that leaves the normal of a surface as it is, up to the
/// translations of the crystal: a turn about the normal or a mirror plane through it, and a shift.
struct SurfaceOperation {
    bool isMirror = false;
    double angle_deg = 0.0;           ///< of the turn, from x towards y, or azimuth of the mirror plane
    std::vector<std::size_t> images;  ///< where each atom of the cell comes to
};

/// The symmetry of a crystal, found from its atoms: each has to come to one of its element, within a
/// tolerance. A cell may hold several primitive ones.
class CellSymmetry {
public:
    static constexpr double kSamePlace_angstrom = 0.01;  ///< for coordinates of a few digits

    /// Keeps a reference.
    explicit CellSymmetry(const CrystalCell& cell, double tolerance_angstrom = kSamePlace_angstrom);

    /// Translations of the crystal bring to coincide the atoms of one class; its first atom names it.
    std::size_t ClassOf(std::size_t atom) const { return class_[atom]; }

    /// All operations, the identity among them, for the frame whose rows are x, y and the normal z.
    std::vector<SurfaceOperation> KeepingNormal(const gemmi::Mat33& frame) const;

    /// The translations up to a length, angstrom; that of length 0 among them.
    std::vector<gemmi::Vec3> TranslationsWithin(double radius) const;

private:
    class Mapping;

    bool IsTranslation(const gemmi::Vec3& fractional) const;

    const CrystalCell& cell_;
    double tolerance_;
    CellGrid grid_;
    std::vector<std::size_t> rarest_;  // atoms of the rarest element: to them its first one is brought
    std::vector<std::size_t> class_;
    std::vector<gemmi::Vec3> translations_;  // in fractions, up to the axes
};

}  // namespace qvre
