#include "scattering/ZfSphereExpansion.h"

#include <algorithm>
#include <cmath>
#include <exception>

#include "foundation/Matrices.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"

namespace {

constexpr double kParameterArea = 19.739208802178716;  // 2 pi^2: (0, pi) by (0, 2 pi)
constexpr std::int32_t kFirstComparedLevel = 5;

/// sin(theta) P(l,m)(theta) for every parameter value: with the phi factor below, sin(theta) conj(Y_lm).
std::vector<ZfLmDoubleTable> ThetaFactors(const std::vector<double>& t, std::int32_t lSize,
                                          ZfLmDoubleTable& norm) {
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

/// Squared norms of a table and of its change against another.
struct Change {
    double size = 0.0;
    double difference = 0.0;
};

Change Compare(const ZfLmComplexTable& before, const ZfLmComplexTable& now) {
    Change change;
    for (std::size_t i = 0; i < before.block.size(); ++i) {
        change.size += std::norm(before.block[i]);
        change.difference += std::norm(now.block[i] - before.block[i]);
    }
    return change;
}

}  // namespace

ZfLevelPoints GridPoints(std::int32_t level) {
    ZfLevelPoints points;
    const auto add = [&points](std::int32_t a, std::int32_t b) {
        points.thetaIndex.push_back(a);
        points.phiIndex.push_back(b);
    };
    if (level == 0) {
        points.t = {0.0};
        add(0, 0);
    } else if (level % 2 == 1) {
        const std::int32_t c = 1 << ((level - 1) / 2);
        for (std::int32_t i = 0; i < c; ++i) points.t.push_back((2.0 * i + 1.0) / (2.0 * c));
        for (std::int32_t i = 0; i < c; ++i)
            for (std::int32_t j = 0; j < c; ++j) add(i, j);
    } else {
        const std::int32_t c = 1 << ((level - 2) / 2);
        for (std::int32_t i = 0; i < 2 * c; ++i) points.t.push_back(static_cast<double>(i) / (2.0 * c));
        for (std::int32_t i = 1; i < 2 * c; i += 2) {
            for (std::int32_t j = 0; j < 2 * c; j += 2) {
                add(i, j);
                add(j, i);
            }
        }
    }
    return points;
}

void ZfSphereExpansion::LevelIntegral(ZfLmComplexTable& result) {
    const ZfLevelPoints lattice = GridPoints(level);
    const std::vector<ZfLmDoubleTable> u = ThetaFactors(lattice.t, lSize, legendreNorm);
    const std::vector<ZfLmComplexTable> v = PhiFactors(lattice.t, lSize);
    const auto added = static_cast<std::int32_t>(lattice.thetaIndex.size());
    ZfLComplexMatrix samples(grid.Groups(), added);
    std::exception_ptr failure;

    // Each thread writes the samples of its own points.
#pragma omp parallel for schedule(static)
    for (std::int32_t i = 0; i < added; ++i) {
        try {
            const auto p = static_cast<std::size_t>(i);
            const double theta = kPi * lattice.t[static_cast<std::size_t>(lattice.thetaIndex[p])];
            const double phi = kTwoPi * lattice.t[static_cast<std::size_t>(lattice.phiIndex[p])];
            for (std::int32_t g = 0; g < grid.Groups(); ++g)
                wave->Value(samples.At(g, i), grid.groupRadius[static_cast<std::size_t>(g)], theta, phi);
        } catch (...) {
#pragma omp critical
            failure = std::current_exception();
        }
    }
    if (failure) std::rethrow_exception(failure);

    // One thread owns one (l, m) and takes the points in order: the same bits for any number of threads.
    const auto size = static_cast<std::int32_t>(sum.block.size());
#pragma omp parallel for schedule(static)
    for (std::int32_t p = 0; p < size; ++p) {
        const auto lm = static_cast<std::size_t>(p);
        const std::int32_t group = grid.lOfIndex.block[lm] / grid.groupSize;
        double re = 0.0;
        double im = 0.0;
        for (std::int32_t i = 0; i < added; ++i) {
            const auto point = static_cast<std::size_t>(i);
            const std::complex<double>& e = v[static_cast<std::size_t>(lattice.phiIndex[point])].block[lm];
            const double factor = u[static_cast<std::size_t>(lattice.thetaIndex[point])].block[lm];
            const std::complex<double>& w = samples.Data()[std::int64_t{i} * samples.ColSize + group];
            const double a = e.real() * factor;
            const double b = e.imag() * factor;
            re += a * w.real() - b * w.imag();
            im += a * w.imag() + b * w.real();
        }
        sum.block[lm] += std::complex<double>(re, im);
    }

    points += added;
    result.SetSize(lSize);
    for (std::size_t i = 0; i < sum.block.size(); ++i)
        result.block[i] = sum.block[i] / static_cast<double>(points) * kParameterArea;
}

void ZfSphereExpansion::Expand(ZfLmComplexTable& result, const ZfWaveFunction& source, double radius) {
    wave = &source;
    if (radius == 0.0) throw "r value is illigal";
    if (grid.lSize != lSize) {
        grid.lSize = lSize;
        grid.rebuild = true;
    }
    grid.BuildGrid();
    grid.SetWaveNumber(source.WaveNumber());
    sum.SetSize(lSize);
    sum.Zero();
    level = 0;
    points = 0;
    lastError = -1.0;

    ZfLmComplexTable rawBefore;
    ZfLmComplexTable raw;
    ZfLmComplexTable refined;
    while (true) {
        rawBefore = raw;
        result = refined;
        LevelIntegral(raw);
        refined = raw;
        if (level >= kFirstComparedLevel) {
            for (std::size_t i = 0; i < raw.block.size(); ++i) {
                const auto l = static_cast<std::size_t>(grid.lOfIndex.block[i]);
                refined.block[i] = (4.0 * raw.block[i] - rawBefore.block[i]) / 3.0 / grid.besselAtGroup[l];
            }
            // The first comparison sets this level against the raw one before it, which is not divided by
            // j_l: it rarely stops the loop.
            const Change change = Compare(result, refined);
            if (!std::isfinite(change.size) || !std::isfinite(change.difference))
                throw ZfError("The wave around an atom is not finite");
            if (change.size == 0.0 && change.difference == 0.0) break;  // no source reaches this atom
            if (change.size != 0.0) {
                lastError = std::sqrt(change.difference / change.size);
                if (tolerance > lastError) break;
            }
            if (level >= maxLevel - 1) break;
        }
        ++level;
    }
    result = refined;
}
