#pragma once

#include <array>
#include <gemmi/math.hpp>
#include <string>
#include <vector>

namespace qvre {

/// The two shortest translations of a surface, in its frame (angstrom).
using SurfaceLattice = std::array<gemmi::Vec3, 2>;

/// A larger cell of a surface: its vectors are b1 = m11 a1 + m12 a2 and b2 = m21 a1 + m22 a2 (R. L. Park and
/// H. H. Madden, Surf. Sci. 11, 188 (1968)).
struct Superstructure {
    bool IsUnit() const { return Cells() == 1; }
    int Cells() const { return matrix[0] * matrix[3] - matrix[1] * matrix[2]; }  ///< (1x1) cells; above 0
    SurfaceLattice Of(const SurfaceLattice& lattice) const;

    /// The (1x1) cells, each by its two numbers.
    std::vector<std::array<int, 2>> CellsInside() const;

    std::array<int, 4> matrix = {1, 0, 0, 1};
};

/// Reads "p(2x1)", "c(2x2)", "2x2", "(r3xr3)R30" (also sqrt3; E. A. Wood, J. Appl. Phys. 35, 1306 (1964)), or
/// the four numbers of a matrix, "1 1 -1 1"; empty: (1x1). Throws ZfError for what does not fit the lattice.
Superstructure ParseSuperstructure(const std::string& text, const SurfaceLattice& lattice);

}  // namespace qvre
