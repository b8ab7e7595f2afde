#include "reference/PlainExpansion.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <exception>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Matrices.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

namespace plain {
namespace {

constexpr double kParameterArea = 19.739208802178716;  // 2 pi^2: (0, pi) by (0, 2 pi)
constexpr std::int32_t kFirstComparedLevel = 5;
constexpr std::int32_t kLastLevel = 39;
constexpr std::int32_t kGroupSize = 8;

/// The spheres on which a wave is sampled, one a group of l values.
struct Spheres {
    std::vector<double> radius;  ///< m
    std::vector<double> bessel;  ///< j_l on the sphere of its group, per l
};

/// Radius where the product of the group's j_l(kr) is highest; products of negative sign never win.
Spheres SearchSpheres(std::int32_t lSize, double k) {
    const auto groups = static_cast<std::size_t>((lSize + kGroupSize - 1) / kGroupSize);
    Spheres spheres{std::vector<double>(groups, 0.0),
                    std::vector<double>(static_cast<std::size_t>(lSize), 0.0)};
    std::vector<double> best(groups, 0.0);
    ZfSphericalBessel bessel;
    for (double x = 0.0; x < 1.5 * lSize; x += 0.01) {
        bessel.Calculate(lSize, x);
        for (std::size_t g = 0; g < groups; ++g) {
            const std::int32_t begin = static_cast<std::int32_t>(g) * kGroupSize;
            const std::int32_t end = std::min(begin + kGroupSize, lSize);
            double product = 1.0;
            for (std::int32_t l = begin; l < end; ++l) product *= bessel.J(l);
            if (!(product > best[g])) continue;
            best[g] = product;
            spheres.radius[g] = x / k;
            for (std::int32_t l = begin; l < end; ++l)
                spheres.bessel[static_cast<std::size_t>(l)] = bessel.J(l);
        }
    }
    return spheres;
}

/// The point (a, b) stands at theta = pi t[a], phi = 2 pi t[b].
struct Lattice {
    std::vector<double> t;
    std::vector<std::size_t> a;
    std::vector<std::size_t> b;

    void Add(std::size_t thetaIndex, std::size_t phiIndex) {
        a.push_back(thetaIndex);
        b.push_back(phiIndex);
    }
};

/// The points that one level adds: odd levels the centres of the cells, even levels the edges.
Lattice PointsOfLevel(std::int32_t level) {
    Lattice points;
    if (level == 0) {
        points.t = {0.0};
        points.Add(0, 0);
        return points;
    }
    const std::size_t c = std::size_t{1} << ((level - 1) / 2);
    const auto cells = static_cast<double>(2 * c);
    if (level % 2 == 1) {
        for (std::size_t i = 0; i < c; ++i) points.t.push_back(static_cast<double>(2 * i + 1) / cells);
        for (std::size_t i = 0; i < c; ++i)
            for (std::size_t j = 0; j < c; ++j) points.Add(i, j);
        return points;
    }
    for (std::size_t i = 0; i < 2 * c; ++i) points.t.push_back(static_cast<double>(i) / cells);
    for (std::size_t i = 1; i < 2 * c; i += 2) {
        for (std::size_t j = 0; j < 2 * c; j += 2) {
            points.Add(i, j);
            points.Add(j, i);
        }
    }
    return points;
}

/// sin(theta) times the theta factors of the harmonics.
std::vector<ZfLmDoubleTable> ThetaFactors(const std::vector<double>& t, std::int32_t lSize) {
    ZfLmDoubleTable norm;
    std::vector<ZfLmDoubleTable> u(t.size());
    for (std::size_t q = 0; q < t.size(); ++q) {
        LegendreTable(norm, u[q], lSize, kPi * t[q]);
        for (double& value : u[q].block) value *= std::sin(kPi * t[q]);
    }
    return u;
}

std::vector<ZfLmComplexTable> PhiFactors(const std::vector<double>& t, std::int32_t lSize) {
    std::vector<ZfLmComplexTable> v(t.size());
    for (std::size_t q = 0; q < t.size(); ++q) {
        PhiTable(v[q], lSize, kTwoPi * t[q]);
        for (std::complex<double>& value : v[q].block) value = std::conj(value);
    }
    return v;
}

ZfLComplexMatrix Samples(const ZfWaveFunction& wave, const Spheres& spheres, const Lattice& points) {
    const auto groups = static_cast<std::int32_t>(spheres.radius.size());
    const auto count = static_cast<std::int32_t>(points.a.size());
    ZfLComplexMatrix samples(groups, count);
    std::exception_ptr failure;
#pragma omp parallel for schedule(static)
    for (std::int32_t i = 0; i < count; ++i) {
        try {
            const double theta = kPi * points.t[points.a[static_cast<std::size_t>(i)]];
            const double phi = kTwoPi * points.t[points.b[static_cast<std::size_t>(i)]];
            for (std::int32_t g = 0; g < groups; ++g)
                wave.Value(samples.At(g, i), spheres.radius[static_cast<std::size_t>(g)], theta, phi);
        } catch (...) {
#pragma omp critical
            failure = std::current_exception();
        }
    }
    if (failure) std::rethrow_exception(failure);
    return samples;
}

/// Adds sin(theta) conj(Y_lm) times the wave, point by point.
void Project(ZfLmComplexTable& sum, const ZfLComplexMatrix& samples, const Lattice& points) {
    const std::vector<ZfLmDoubleTable> u = ThetaFactors(points.t, sum.L);
    const std::vector<ZfLmComplexTable> v = PhiFactors(points.t, sum.L);
#pragma omp parallel for schedule(static)
    for (std::size_t p = 0; p < sum.block.size(); ++p) {
        const auto l = static_cast<std::int64_t>(std::sqrt(static_cast<double>(p)));
        double re = 0.0;
        double im = 0.0;
        for (std::size_t i = 0; i < points.a.size(); ++i) {
            const std::complex<double> y = v[points.b[i]].block[p] * u[points.a[i]].block[p];
            const std::complex<double>& w =
                samples.Data()[static_cast<std::int64_t>(i) * samples.ColSize + l / kGroupSize];
            re += y.real() * w.real() - y.imag() * w.imag();
            im += y.real() * w.imag() + y.imag() * w.real();
        }
        sum.block[p] += std::complex<double>(re, im);
    }
}

/// Richardson step from the level before, divided by j_l.
ZfLmComplexTable Refine(const ZfLmComplexTable& raw, const ZfLmComplexTable& rawBefore,
                        const std::vector<double>& bessel) {
    ZfLmComplexTable refined(raw.L);
    for (std::int32_t l = 0; l < raw.L; ++l)
        for (std::int32_t m = -l; m <= l; ++m)
            refined.At(l, m) =
                (4.0 * raw.At(l, m) - rawBefore.At(l, m)) / 3.0 / bessel[static_cast<std::size_t>(l)];
    return refined;
}

/// Whether the change against the level before is below the tolerance, or there is no wave at all.
bool HasConverged(const ZfLmComplexTable& before, const ZfLmComplexTable& now, double tolerance) {
    double size = 0.0;
    double difference = 0.0;
    for (std::size_t i = 0; i < before.block.size(); ++i) {
        size += std::norm(before.block[i]);
        difference += std::norm(now.block[i] - before.block[i]);
    }
    if (!std::isfinite(size) || !std::isfinite(difference))
        throw ZfError("The wave around an atom is not finite");
    if (size == 0.0) return difference == 0.0;
    return tolerance > std::sqrt(difference / size);
}

}  // namespace

Expansion Expand(const ZfWaveFunction& wave, std::int32_t lSize, double tolerance) {
    const Spheres spheres = SearchSpheres(lSize, wave.WaveNumber());
    ZfLmComplexTable sum(lSize);
    ZfLmComplexTable raw(lSize);
    Expansion result;
    std::size_t count = 0;
    for (std::int32_t level = 0; level <= kLastLevel; ++level) {
        const Lattice points = PointsOfLevel(level);
        Project(sum, Samples(wave, spheres, points), points);
        count += points.a.size();

        const ZfLmComplexTable rawBefore = raw;
        for (std::size_t i = 0; i < sum.block.size(); ++i)
            raw.block[i] = sum.block[i] / static_cast<double>(count) * kParameterArea;
        const ZfLmComplexTable before = result.coefficients;
        result.level = level;
        result.coefficients = level < kFirstComparedLevel ? raw : Refine(raw, rawBefore, spheres.bessel);
        if (level >= kFirstComparedLevel && HasConverged(before, result.coefficients, tolerance)) break;
    }
    return result;
}

}  // namespace plain
