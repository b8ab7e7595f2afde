#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvre {

/// R over a grid of one or two numbers.
struct ScannedR {
    /// R at the point i along the first axis and j along the second one.
    double At(std::size_t i, std::size_t j) const {
        return R[i * (axes.size() > 1 ? axes[1].size() : 1) + j];
    }

    std::vector<std::vector<double>> axes;  ///< values, rising; one or two lists
    std::vector<double> R;                  ///< the last axis running fastest
};

/// The least R of a scan.
struct LeastR {
    std::vector<double> point;  ///< of the grid with the least R
    /// Minimum of the parabola through the least value and its two neighbours; of two axes, of the quadratic
    /// surface of least squares through the 3 x 3 values around. Empty without one.
    std::vector<double> at;
    double R = 0.0;              ///< there; without a parabola the least value
    std::vector<double> error;   ///< half width of the R level, the other number optimised; empty without one
    std::vector<double> levelX;  ///< of two numbers: the ellipse where the surface crosses the R level
    std::vector<double> levelY;
    std::string whyNone;  ///< why there is no minimum between the values, or no error
};

/// Sorts the points of a scan into a grid: one value of R for every combination.
ScannedR GridOf(const std::vector<std::vector<double>>& points, const std::vector<double>& R);

/// The error is how far the parabola stays below R_min (1 + sqrt(2/N)), for N independent data (N. A. Booth,
/// R. Davis, R. Toomes, D. P. Woodruff, C. Hirschmugl, K. M. Schindler, O. Schaff, V. Fernandez, A. Theobald,
/// Ph. Hofmann, R. Lindsay, T. Giessel, P. Baumgaertel, A. M. Bradshaw, Surf. Sci. 387, 152 (1997)).
LeastR FindLeastR(const ScannedR& scan, double independentData);

/// Number of independent data among measured directions, degrees. A pattern of angular momenta up to L has
/// (L + 1)^2 numbers on the full sphere; so many cells of equal solid angle cover it, and those that hold a
/// measured direction are counted. Points that lie closer than the pattern can change add nothing.
double IndependentDirections(const std::vector<double>& theta, const std::vector<double>& phi, double lMost);

/// Of a curve over the energy: its range over 4 V_0i, the width of the narrowest feature in LEED (J. B.
/// Pendry, J. Phys. C 13, 937 (1980)), with 4 eV for V_0i, the imaginary part of the inner potential. At
/// least 1.
double IndependentEnergies(double range_eV);

}  // namespace qvre
