#include "report/compare/LeastR.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <set>
#include <utility>

#include "foundation/Constants.h"

namespace qvre {

namespace {

/// Polynomials 1, p1, p2 that are orthogonal on three values: the coefficients of a fit of least squares on
/// a grid of them are projections.
class ThreeValues {
public:
    explicit ThreeValues(const double* values) {
        mean_ = (values[0] + values[1] + values[2]) / 3.0;
        double squares = 0.0;
        double cubes = 0.0;
        for (std::size_t i = 0; i < 3; ++i) {
            x_.at(i) = values[i] - mean_;
            squares += x_.at(i) * x_.at(i);
            cubes += x_.at(i) * x_.at(i) * x_.at(i);
        }
        slope_ = cubes / squares;
        constant_ = squares / 3.0;
    }

    double Mean() const { return mean_; }
    double Slope() const { return slope_; }
    double Value(int degree, double x) const {
        return degree == 0 ? 1.0 : degree == 1 ? x : x * x - slope_ * x - constant_;
    }
    double At(int degree, std::size_t i) const { return Value(degree, x_.at(i)); }
    double Norm(int degree) const {
        double norm = 0.0;
        for (std::size_t i = 0; i < 3; ++i) norm += At(degree, i) * At(degree, i);
        return norm;
    }
    bool Holds(double x) const { return x_[0] <= x && x <= x_[2]; }

private:
    std::array<double, 3> x_ = {};
    double mean_ = 0.0;
    double slope_ = 0.0;
    double constant_ = 0.0;
};

std::size_t IndexIn(const std::vector<double>& values, double value) {
    return static_cast<std::size_t>(std::find(values.begin(), values.end(), value) - values.begin());
}

bool IsInside(std::size_t index, const std::vector<double>& axis) {
    return index > 0 && index + 1 < axis.size();
}

double HalfWidth(double rise, double curvature) {
    return std::sqrt(2.0 * rise / curvature);
}

void FitParabola(const ScannedR& scan, std::size_t i, double level, LeastR& least) {
    const ThreeValues x(&scan.axes[0][i - 1]);
    std::array<double, 3> c = {};
    for (int degree = 0; degree < 3; ++degree) {
        for (std::size_t k = 0; k < 3; ++k)
            c.at(static_cast<std::size_t>(degree)) += scan.At(i - 1 + k, 0) * x.At(degree, k);
        c.at(static_cast<std::size_t>(degree)) /= x.Norm(degree);
    }
    if (!(c[2] > 0.0)) {
        least.whyNone = "R is no parabola there";
        return;
    }
    const double minimum = 0.5 * (x.Slope() - c[1] / c[2]);
    least.R = c[0] + c[1] * minimum + c[2] * x.Value(2, minimum);
    least.at = {x.Mean() + minimum};
    least.error = {HalfWidth(least.R * level, 2.0 * c[2])};
}

void FitSurface(const ScannedR& scan, std::size_t i, std::size_t j, double level, LeastR& least) {
    const ThreeValues x(&scan.axes[0][i - 1]);
    const ThreeValues y(&scan.axes[1][j - 1]);
    const auto coefficient = [&](int a, int b) {
        double sum = 0.0;
        for (std::size_t k = 0; k < 3; ++k)
            for (std::size_t m = 0; m < 3; ++m)
                sum += scan.At(i - 1 + k, j - 1 + m) * x.At(a, k) * y.At(b, m);
        return sum / (x.Norm(a) * y.Norm(b));
    };
    // R = c00 + c10 x + c01 y + c11 x y + c20 p2(x) + c02 p2(y); its gradient is b + H (x, y).
    const double xx = 2.0 * coefficient(2, 0);
    const double yy = 2.0 * coefficient(0, 2);
    const double xy = coefficient(1, 1);
    const double bx = coefficient(1, 0) - 0.5 * xx * x.Slope();
    const double by = coefficient(0, 1) - 0.5 * yy * y.Slope();
    const double determinant = xx * yy - xy * xy;
    if (!(xx > 0.0 && determinant > 0.0)) {
        least.whyNone = "R is no bowl there";
        return;
    }
    const double atX = (xy * by - yy * bx) / determinant;
    const double atY = (xy * bx - xx * by) / determinant;
    if (!x.Holds(atX) || !y.Holds(atY)) {
        least.whyNone = "the surface through the values around has its minimum outside of them";
        return;
    }
    least.R = coefficient(0, 0) + coefficient(1, 0) * atX + coefficient(0, 1) * atY + xy * atX * atY +
              0.5 * xx * x.Value(2, atX) + 0.5 * yy * y.Value(2, atY);
    least.at = {x.Mean() + atX, y.Mean() + atY};
    const double rise = least.R * level;
    least.error = {HalfWidth(rise, determinant / yy), HalfWidth(rise, determinant / xx)};
    // With the Cholesky factor of H the ellipse is a circle.
    const double rest = std::sqrt(yy - xy * xy / xx);
    for (int degree = 0; degree <= 360; degree += 3) {
        const double u = std::sqrt(2.0 * rise) * std::cos(Radians(degree));
        const double v = std::sqrt(2.0 * rise) * std::sin(Radians(degree)) / rest;
        least.levelX.push_back(least.at[0] + u / std::sqrt(xx) - xy / xx * v);
        least.levelY.push_back(least.at[1] + v);
    }
}

}  // namespace

ScannedR GridOf(const std::vector<std::vector<double>>& points, const std::vector<double>& R) {
    ScannedR scan;
    for (std::size_t axis = 0; axis < points.front().size(); ++axis) {
        std::set<double> values;
        for (const std::vector<double>& point : points) values.insert(point[axis]);
        scan.axes.emplace_back(values.begin(), values.end());
    }
    scan.R.resize(R.size());
    for (std::size_t k = 0; k < R.size(); ++k) {
        std::size_t index = 0;
        for (std::size_t axis = 0; axis < scan.axes.size(); ++axis)
            index = index * scan.axes[axis].size() + IndexIn(scan.axes[axis], points[k][axis]);
        scan.R.at(index) = R[k];
    }
    return scan;
}

LeastR FindLeastR(const ScannedR& scan, double independentData) {
    LeastR least;
    const auto best =
        static_cast<std::size_t>(std::min_element(scan.R.begin(), scan.R.end()) - scan.R.begin());
    const std::size_t inner = scan.axes.size() > 1 ? scan.axes[1].size() : 1;
    const std::size_t i = best / inner;
    const std::size_t j = best % inner;
    least.point = {scan.axes[0][i]};
    if (scan.axes.size() > 1) least.point.push_back(scan.axes[1][j]);
    least.R = scan.R[best];
    if (!IsInside(i, scan.axes[0]) || (scan.axes.size() > 1 && !IsInside(j, scan.axes[1]))) {
        least.whyNone = "it lies at the end of the scan: scan further";
        return least;
    }
    const double level = std::sqrt(2.0 / independentData);
    if (scan.axes.size() > 1)
        FitSurface(scan, i, j, level, least);
    else
        FitParabola(scan, i, level, least);
    if (!least.at.empty() && !(least.R > 0.0)) {
        least.whyNone = "R is too near 0 for a parabola: take smaller steps";
        least.at.clear();
        least.error.clear();
        least.levelX.clear();
        least.levelY.clear();
        least.R = scan.R[best];
    }
    return least;
}

double IndependentDirections(const std::vector<double>& theta, const std::vector<double>& phi, double lMost) {
    const double side = std::sqrt(4.0 * kPi) / (lMost + 1.0);
    std::set<std::pair<long, long>> cells;
    for (std::size_t i = 0; i < theta.size(); ++i) {
        const long ring = std::lround(std::floor(Radians(theta[i]) / side));
        const double middle = std::sin((static_cast<double>(ring) + 0.5) * side);
        const double around = std::max(1.0, std::round(kTwoPi * std::abs(middle) / side));
        double turn = std::fmod(phi[i], 360.0) / 360.0;
        if (turn < 0.0) turn += 1.0;
        cells.insert({ring, std::lround(std::floor(turn * around)) % std::lround(around)});
    }
    return static_cast<double>(cells.size());
}

double IndependentEnergies(double range_eV) {
    constexpr double kV0i_eV = 4.0;
    return std::max(1.0, range_eV / (4.0 * kV0i_eV));
}

}  // namespace qvre
