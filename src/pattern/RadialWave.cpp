#include "pattern/RadialWave.h"

#include <algorithm>
#include <cmath>

#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

namespace {

using Rows = std::vector<std::vector<double>>;

bool HasRows(const Rows& rows, std::size_t count, std::size_t points) {
    return rows.size() >= count &&
           std::all_of(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(count),
                       [=](const auto& row) { return row.size() == points; });
}

/// Whether the tables hold solutions for l below `count`, on a grid on which a point can be found.
bool HoldSolutions(const RadialTables& tables, std::int32_t count) {
    const std::vector<double>& grid = tables.LnX;
    const auto n = static_cast<std::size_t>(count);
    const auto rises = [](double a, double b) { return !(a < b); };
    return grid.size() >= 2 && std::adjacent_find(grid.begin(), grid.end(), rises) == grid.end() &&
           HasRows(tables.P, n, grid.size()) && HasRows(tables.L, n, grid.size());
}

/// Weights of the values and slopes at both ends of a grid cell.
struct HermiteCubic {
    std::size_t end;  ///< index of the upper end
    double valueBegin, valueEnd, slopeBegin, slopeEnd;

    double operator()(const std::vector<double>& values, const std::vector<double>& slopes) const {
        return valueBegin * values[end - 1] + valueEnd * values[end] + slopeBegin * slopes[end - 1] +
               slopeEnd * slopes[end];
    }
};

HermiteCubic CubicAt(const std::vector<double>& grid, double r) {
    const auto above = std::upper_bound(grid.begin() + 1, grid.end(), r,
                                        [](double radius, double lnX) { return radius < std::exp(lnX); });
    if (above == grid.end()) throw ZfError("Radius is not found");
    const double h = above[0] - above[-1];
    const double t = std::max((std::log(r) - above[-1]) / h, 0.0);
    const double s = 1.0 - t;
    return {static_cast<std::size_t>(above - grid.begin()), s * s * (1.0 + 2.0 * t), t * t * (3.0 - 2.0 * t),
            h * t * s * s, -h * t * t * s};
}

}  // namespace

namespace qvre {

double AtomRadius(const RadialTables& tables) {
    return tables.LnX.empty() ? 0.0 : std::exp(tables.LnX.back());
}

RadialWave JoinRadialWave(const RadialTables& tables, const ZfFreeElectron& outside) {
    const std::int32_t n = outside.B.L;
    if (!HoldSolutions(tables, n)) throw ZfError("Please calculate phase shift.");
    RadialWave inside{&tables, ZfLmComplexTable(n), {}};
    LegendreNormTable(inside.legendreNorm, n);
    const double x = outside.k * AtomRadius(tables);
    ZfSphericalBessel bessel;
    bessel.Calculate(n, x);
    for (std::int32_t l = 0; l < n; ++l) {
        const double u = tables.P[static_cast<std::size_t>(l)].back();
        const double slope = (l * u + tables.L[static_cast<std::size_t>(l)].back()) / x;
        const double norm = u * u + slope * slope;
        if (!(norm > 0.0)) throw ZfError("Please calculate phase shift.");
        // h_l' = (l/x) h_l - h_(l+1) (DLMF 10.51.2).
        const std::complex<double> h(bessel.J(l), bessel.Y(l));
        const std::complex<double> dh = l / x * h - std::complex<double>(bessel.J(l + 1), bessel.Y(l + 1));
        const std::complex<double> outgoing = (h * u + dh * slope) / norm;
        for (std::int32_t m = -l; m <= l; ++m)
            inside.b.At(l, m) = outside.A.At(l, m) * outgoing + outside.B.At(l, m) * std::conj(outgoing);
    }
    return inside;
}

}  // namespace qvre

std::complex<double> RadialWaveAtPoint(const RadialWave& wave, double r, double theta, double phi) {
    if (r == 0.0) return 0.0;
    thread_local ZfLmComplexTable y;
    HarmonicTable(wave.legendreNorm, y, wave.b.L, theta, phi);
    const HermiteCubic cubic = CubicAt(wave.tables->LnX, r);
    const double ratio = r / AtomRadius(*wave.tables);
    std::complex<double> sum = 0.0;
    double power = 1.0;
    std::size_t i = 0;
    for (std::int32_t l = 0; l < wave.b.L; ++l, power *= ratio) {
        std::complex<double> component = 0.0;
        for (std::int32_t m = -l; m <= l; ++m, ++i) component += wave.b.block[i] * y.block[i];
        const auto row = static_cast<std::size_t>(l);
        sum += power * cubic(wave.tables->P[row], wave.tables->L[row]) * component;
    }
    return sum;
}
