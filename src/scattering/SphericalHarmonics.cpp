#include "scattering/SphericalHarmonics.h"

#include <cmath>
#include <cstdlib>

#include "foundation/Constants.h"

using namespace qvre;

namespace {

const double kPhiNorm = 1.0 / std::sqrt(kTwoPi);

/// Place of (l, m) in a table of any size, for loops that stay inside.
std::int32_t Index(std::int32_t l, std::int32_t m) {
    return (l + 1) * l + m;
}

}  // namespace

void LegendreNormTable(ZfLmDoubleTable& table, std::int32_t n) {
    table.SetSize(n);
    table.Zero();
    if (n == 0) return;
    table.At(0, 0) = 1.0;
    for (std::int32_t l = 0; l + 1 < n; ++l)
        table.At(l + 1, -(l + 1)) = std::sqrt(1.0 / ((2.0 * l + 2.0) * (2.0 * l + 1.0))) * table.At(l, -l);
    for (std::int32_t l = 0; l + 1 < n; ++l)
        for (std::int32_t m = 0; m <= l; ++m)
            table.At(l + 1, -m) = std::sqrt((l - m + 1.0) / (l + m + 1.0)) * table.At(l, -m);
    for (std::int32_t l = 0; l < n; ++l) {
        for (std::int32_t m = 0; m <= l; ++m) table.At(l, -m) *= std::sqrt((2.0 * l + 1.0) * 0.5);
        for (std::int32_t m = 1; m <= l; ++m)
            table.At(l, m) = m % 2 == 1 ? -table.At(l, -m) : table.At(l, -m);
    }
}

void LegendreRaw(ZfLmDoubleTable& table, std::int32_t n, double theta) {
    table.SetSize(n);
    if (n == 0) return;
    const double s = std::sin(theta);
    const double c = std::cos(theta);
    std::vector<double>& p = table.block;
    const auto at = [&p](std::int32_t l, std::int32_t m) -> double& {
        return p[static_cast<std::size_t>(Index(l, m))];
    };
    at(0, 0) = 1.0;
    for (std::int32_t l = 0; l + 1 < n; ++l) at(l + 1, l + 1) = (2.0 * l + 1.0) * s * at(l, l);
    for (std::int32_t l = 0; l + 1 < n; ++l) at(l + 1, l) = (2.0 * l + 1.0) * c * at(l, l);
    for (std::int32_t l = 2; l < n; ++l)
        for (std::int32_t m = 0; m <= l - 2; ++m)
            at(l, m) = ((2.0 * l - 1.0) * c * at(l - 1, m) - (l + m - 1.0) * at(l - 2, m)) / (l - m);
    for (std::int32_t l = 1; l < n; ++l)
        for (std::int32_t m = -l; m < 0; ++m) at(l, m) = at(l, -m);
}

void LegendreTable(ZfLmDoubleTable& norm, ZfLmDoubleTable& result, std::int32_t n, double theta) {
    if (n > norm.L) LegendreNormTable(norm, n);
    LegendreRaw(result, n, theta);
    for (std::size_t i = 0; i < result.block.size(); ++i) result.block[i] *= norm.block[i];
}

void PhiTable(ZfLmComplexTable& result, std::int32_t n, double phi) {
    result.SetSize(n);
    for (std::int32_t m = 0; m < n; ++m) {
        const std::complex<double> e(kPhiNorm * std::cos(m * phi), kPhiNorm * std::sin(m * phi));
        for (std::int32_t l = m; l < n; ++l) {
            result.At(l, m) = e;
            result.At(l, -m) = std::conj(e);
        }
    }
}

void HarmonicTable(ZfLmDoubleTable& norm, ZfLmComplexTable& result, std::int32_t n, double theta,
                   double phi) {
    // One scratch table a thread: this runs inside parallel loops, which do not allocate.
    thread_local ZfLmDoubleTable legendre;
    LegendreTable(norm, legendre, n, theta);
    result.SetSize(n);
    for (std::int32_t m = 1 - n; m < n; ++m) {
        const double re = kPhiNorm * std::cos(m * phi);
        const double im = kPhiNorm * std::sin(m * phi);
        for (std::int32_t l = std::abs(m); l < n; ++l) {
            const auto i = static_cast<std::size_t>(Index(l, m));
            result.block[i] = {legendre.block[i] * re, legendre.block[i] * im};
        }
    }
}
