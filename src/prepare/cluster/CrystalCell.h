#pragma once

#include <array>
#include <cstddef>
#include <gemmi/math.hpp>
#include <string>
#include <vector>

namespace qvre {

/// One atom in the cell of a crystal.
struct CellAtom {
    std::string element;
    gemmi::Vec3 fractional;       ///< along the axes
    double Uiso_angstrom2 = 0.0;  ///< mean square displacement, square angstrom; 0: not known
};

/// A periodic crystal: the atoms repeat along the three axes, which may be oblique.
struct CrystalCell {
    /// Position in angstrom of an atom in the cell (i, j, k).
    gemmi::Vec3 Position(const CellAtom& atom, int i = 0, int j = 0, int k = 0) const {
        return axes.multiply(atom.fractional + gemmi::Vec3(i, j, k));
    }

    /// Rows are the reciprocal vectors without the factor 2 pi: a row times a position is a fraction.
    gemmi::Mat33 Reciprocal() const { return axes.inverse(); }

    /// Distance in angstrom of the fractional vector's end from the nearest lattice point, for vectors short
    /// beside the cell.
    double DistanceFromLattice(const gemmi::Vec3& fractional) const;

    /// Chemical formula in the order of first appearance, such as "GaAs".
    std::string Formula() const;

    std::vector<std::string> Elements() const;  ///< each once, in the order of appearance

    gemmi::Mat33 axes;  ///< columns a, b, c; angstrom
    std::vector<CellAtom> atoms;
};

/// The cells (first to last along each axis) in which an atom may lie within `radius` angstrom of a point,
/// whose place is given relative to the atom's in fractions.
struct CellBox {
    CellBox(const gemmi::Mat33& reciprocal, const gemmi::Vec3& point, double radius);

    std::array<int, 3> first = {};
    std::array<int, 3> last = {};
};

}  // namespace qvre
