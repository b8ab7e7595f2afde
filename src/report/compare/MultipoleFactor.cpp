#include "report/compare/MultipoleFactor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstddef>

#include "foundation/Constants.h"
#include "report/sphere/PolarBackground.h"
#include "scattering/SphericalHarmonics.h"

namespace qvre {

namespace {

using AzimuthalSums = std::array<std::complex<double>, kMultipoles + 1>;

/// sum over the points of each ring of chi exp(-i m phi), m = 0 .. kMultipoles, over the number of points.
std::vector<AzimuthalSums> SumsOfRings(const PolarRings& rings, const std::vector<double>& phi,
                                       const std::vector<double>& chi) {
    std::vector<AzimuthalSums> sums(rings.Count());
    for (std::size_t i = 0; i < chi.size(); ++i) {
        const std::size_t ring = rings.ringOf[i];
        const std::complex<double> turn = std::polar(1.0, -phi[i] * kDegree);
        std::complex<double> term = chi[i] / rings.points[ring];
        for (std::complex<double>& sum : sums[ring]) {
            sum += term;
            term *= turn;
        }
    }
    return sums;
}

/// Heights of the rings on the sphere, up to a common factor: each reaches half way to its neighbours.
std::vector<double> SolidAngles(const PolarRings& rings) {
    const std::size_t count = rings.Count();
    std::vector<double> angles(count, 1.0);
    const auto gap = [&rings](std::size_t above) { return rings.theta[above] - rings.theta[above - 1]; };
    for (std::size_t r = 0; r < count && count > 1; ++r) {
        const double width = gap(std::max<std::size_t>(r, 1)) + gap(std::min(r + 1, count - 1));
        angles[r] = std::sin(rings.theta[r] * kDegree) * width;
    }
    return angles;
}

}  // namespace

double MultipoleFactor(const std::vector<double>& theta, const std::vector<double>& phi,
                       const std::vector<double>& chiA, const std::vector<double>& chiB) {
    constexpr int kSize = kMultipoles + 1;
    const PolarRings rings(theta);
    const std::vector<double> solidAngles = SolidAngles(rings);
    const std::vector<AzimuthalSums> sumsA = SumsOfRings(rings, phi, chiA);
    const std::vector<AzimuthalSums> sumsB = SumsOfRings(rings, phi, chiB);
    std::array<AzimuthalSums, kSize> a{};
    std::array<AzimuthalSums, kSize> b{};
    ZfLmDoubleTable norm;
    ZfLmDoubleTable legendre;
    for (std::size_t ring = 0; ring < rings.Count(); ++ring) {
        LegendreTable(norm, legendre, kSize, rings.theta[ring] * kDegree);
        for (std::size_t l = 0; l < kSize; ++l) {
            for (std::size_t m = 0; m <= l; ++m) {
                const double factor =
                    solidAngles[ring] * legendre.At(static_cast<int>(l), static_cast<int>(m));
                a[l][m] += factor * sumsA[ring][m];
                b[l][m] += factor * sumsB[ring][m];
            }
        }
    }
    double difference = 0.0;
    double size = 0.0;
    for (std::size_t l = 0; l < kSize; ++l) {
        for (std::size_t m = 0; m <= l; ++m) {
            const double pair = m == 0 ? 1.0 : 2.0;  // -m has the same size
            difference += pair * std::norm(a[l][m] - b[l][m]);
            size += pair * (std::norm(a[l][m]) + std::norm(b[l][m]));
        }
    }
    return difference / size;
}

}  // namespace qvre
