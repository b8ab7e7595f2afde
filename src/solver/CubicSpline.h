#pragma once

#include <vector>

namespace qvre {

/// An end slope above this asks for a natural end: a second derivative of zero.
constexpr double kNaturalEnd = 9.9e29;

// Cubic spline through the points (x_i, y_i), x strictly rising, two points at least: piecewise cubic with a
// continuous second derivative (Press et al., Numerical Recipes in C, section 3.3).

/// The second derivatives at the points, from the tridiagonal system of the continuous first derivative.
std::vector<double> SplineSecondDerivatives(const std::vector<double>& x, const std::vector<double>& y,
                                            double firstSlope, double lastSlope);

/// Outside the points the first or the last cubic goes on.
double SplineValue(const std::vector<double>& x, const std::vector<double>& y,
                   const std::vector<double>& second, double at);

}  // namespace qvre
