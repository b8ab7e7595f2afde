#pragma once

#include <array>
#include <cstddef>
#include <gemmi/math.hpp>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Finds the atoms of a crystal close to a point, periodic images included, in a time that does not grow with
/// their number: the cell is divided into boxes of about one atom.
class CellGrid {
public:
    explicit CellGrid(const CrystalCell& cell);  ///< keeps a reference

    struct Found {
        std::size_t atom = 0;   ///< index in the cell
        double distance = 0.0;  ///< angstrom
        gemmi::Vec3 offset;     ///< from the point, angstrom
    };

    /// All atoms within `radius` angstrom of a point in fractions; an atom may be there with several images.
    std::vector<Found> Near(const gemmi::Vec3& fractional, double radius) const;

private:
    std::size_t BoxOf(const std::array<int, 3>& place) const;

    const CrystalCell& cell_;
    gemmi::Mat33 reciprocal_;
    std::array<int, 3> boxes_ = {1, 1, 1};         // along each axis
    std::vector<gemmi::Vec3> inside_;              // the atoms' places, reduced to [0, 1)
    std::vector<std::vector<std::size_t>> atoms_;  // by box
};

}  // namespace qvre
