#include "scattering/ZfSphereExpansion.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "Sources.h"
#include "scattering/SphericalHarmonics.h"

namespace {

constexpr std::array<std::int32_t, 4> kSizes = {1, 8, 9, 15};

ZfLmComplexTable Expand(const ZfVectorFreeElectron& list, std::int32_t lSize, double tolerance) {
    list.PrepareNorms();
    ZfSphereExpansion expansion;
    expansion.lSize = lSize;
    expansion.tolerance = tolerance;
    ZfLmComplexTable result;
    expansion.Expand(result, ZfWaveVectorFreeElectron(&list), 2e-10);
    return result;
}

double RelativeError(const ZfLmComplexTable& table, const ZfLmComplexTable& truth) {
    double error = 0.0;
    double size = 0.0;
    for (std::size_t i = 0; i < truth.block.size(); ++i) {
        error += std::norm(table.block[i] - truth.block[i]);
        size += std::norm(truth.block[i]);
    }
    return std::sqrt(error / size);
}

/// c_lm = f_l conj(Y_lm) in one direction.
template <class Factor>
ZfLmComplexTable TableOf(std::int32_t lSize, double theta, double phi, Factor factor) {
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    HarmonicTable(norm, y, lSize, theta, phi);
    for (std::int32_t l = 0; l < lSize; ++l)
        for (std::int32_t m = -l; m <= l; ++m) y.At(l, m) = factor(l) * std::conj(y.At(l, m));
    return y;
}

}  // namespace

TEST(GridPoints, AddUpToALatticeLevelByLevel) {
    const ZfLevelPoints second = GridPoints(2);
    EXPECT_EQ(second.t, (std::vector<double>{0.0, 0.5}));
    EXPECT_EQ(second.thetaIndex, (std::vector<std::int32_t>{1, 0}));
    EXPECT_EQ(second.phiIndex, (std::vector<std::int32_t>{0, 1}));

    std::set<std::pair<double, double>> seen;
    for (std::int32_t level = 0; level <= 10; ++level) {
        const ZfLevelPoints points = GridPoints(level);
        for (std::size_t i = 0; i < points.thetaIndex.size(); ++i)
            seen.emplace(points.t.at(static_cast<std::size_t>(points.thetaIndex[i])),
                         points.t.at(static_cast<std::size_t>(points.phiIndex[i])));
        ASSERT_EQ(seen.size(), std::size_t{1} << level) << "a point came twice, or is missing";
        if (level % 2 == 1) continue;
        const double perSide = std::pow(2.0, level / 2);
        for (const auto& [a, b] : seen) {
            EXPECT_EQ(a * perSide, std::floor(a * perSide));
            EXPECT_EQ(b * perSide, std::floor(b * perSide));
        }
    }
}

// exp(ik.(r - R)) = 4 pi sum i^l j_l(kr) Y_lm(r) conj(Y_lm(k)) exp(-ik.R) (Jackson, eq. 16.127).
TEST(ZfSphereExpansion, ExpandsADisplacedPlaneWave) {
    const double theta = 0.9;
    const double phi = 2.2;
    ZfFreeElectron wave = SourceOf(1, 1.3e-10, -0.4e-10, 0.7e-10);
    wave.SetPlaneWave(
        Vector3(std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)),
        {0.6, -0.3});
    double kr = 0.0;
    for (std::int32_t i = 0; i < 3; ++i) kr += wave.planeWaveVector.VectorAt(i) * wave.position.VectorAt(i);
    const std::complex<double> amplitude = 4.0 * kPi * std::complex<double>(0.6, -0.3) * std::polar(1.0, -kr);
    for (const std::int32_t lSize : kSizes) {
        const ZfLmComplexTable truth = TableOf(lSize, theta, phi, [amplitude](std::int32_t l) {
            return amplitude * std::polar(1.0, l * kPi / 2);
        });
        for (const double tolerance : {0.01, 0.001})
            EXPECT_LT(RelativeError(Expand(ListOf({wave}), lSize, tolerance), truth), tolerance) << lSize;
    }
}

// h_0(k|r - R|) = 4 pi sum j_l(kr) h_l(kR) Y_lm(r) conj(Y_lm(R)) for r < R (DLMF 10.60.2).
TEST(ZfSphereExpansion, ExpandsTheWaveOfADistantSource) {
    const double distance = 2.553e-10;
    const double theta = 2.0;
    const double phi = -0.6;
    const ZfFreeElectron source =
        SWave(distance * std::sin(theta) * std::cos(phi), distance * std::sin(theta) * std::sin(phi),
              distance * std::cos(theta), {0.0, 2.0});
    for (const std::int32_t lSize : kSizes) {
        const ZfLmComplexTable truth = TableOf(lSize, theta, phi, [&source, distance](std::int32_t l) {
            const auto order = static_cast<unsigned>(l);
            const double x = source.k * distance;
            const std::complex<double> h(std::sph_bessel(order, x), std::sph_neumann(order, x));
            return std::complex<double>(0.0, 2.0) * std::sqrt(4.0 * kPi) * h;
        });
        for (const double tolerance : {0.01, 0.001})
            EXPECT_LT(RelativeError(Expand(ListOf({source}), lSize, tolerance), truth), tolerance) << lSize;
    }
}

TEST(ZfSphereExpansion, EndsAtOnceOnAWaveThatIsZeroOrNotFinite) {
    ZfVectorFreeElectron silent = ListOf({SourceOf(3, 2e-10, 0, 0), SourceOf(0, 0, 3e-10, 0)});
    for (const std::complex<double>& c : Expand(silent, 8, 0.01).block) EXPECT_EQ(c, 0.0);

    const double infinity = std::numeric_limits<double>::infinity();
    ZfVectorFreeElectron loud = ListOf({SWave(2e-10, 0, 0, infinity)});
    EXPECT_EQ(ErrorText([&] { Expand(loud, 8, 0.01); }), "The wave around an atom is not finite");
}

TEST(ZfSphereExpansion, LetsFailuresOutOfItsParallelLoops) {
    ZfVectorFreeElectron list = ListOf({SWave(2e-10, 0, 0)});
    list.Ek_eV = -15000.0;
    EXPECT_THROW(Expand(list, 3, 0.01), const char*);
    EXPECT_THROW(Expand(ListOf({}), 3, 0.01), std::out_of_range);
    ZfSphereExpansion expansion;
    ZfLmComplexTable result;
    EXPECT_THROW(expansion.Expand(result, ZfWaveVectorFreeElectron(&list), 0.0), const char*);
    EXPECT_EQ(ErrorText([] { ZfWaveVectorFreeElectron(nullptr).WaveNumber(); }), "pointer is not defined");
    EXPECT_EQ(ErrorText([] { Expand(ListOf({SWave(2e-10, 0, 0)}), -1, 0.01); }), "Error");
    ZfVectorFreeElectron noAmplitude = ListOf({SourceOf(0, 2e-10, 0, 0)});
    noAmplitude.electrons[0].IsPlaneWave = true;
    EXPECT_EQ(ErrorText([&] { Expand(noAmplitude, 3, 0.01); }), "Illegal l value");
}

TEST(ZfSphereExpansion, ComparesOnceHoweverLowTheLastLevel) {
    const ZfVectorFreeElectron list = ListOf({SWave(2e-10, 0, 0)});
    ZfSphereExpansion expansion;
    expansion.lSize = 4;
    ZfLmComplexTable result;
    for (const std::int32_t maxLevel : {0, 3, 7}) {
        expansion.maxLevel = maxLevel;
        expansion.Expand(result, ZfWaveVectorFreeElectron(&list), 2e-10);
        EXPECT_EQ(expansion.level, std::max(maxLevel - 1, 5));
    }
}

TEST(ZfSphereExpansion, GivesTheSameBitsForAnyNumberOfThreads) {
    const int before = omp_get_max_threads();
    ZfFreeElectron source = SourceOf(5, 2e-10, 0.5e-10, -1e-10);
    for (std::size_t i = 0; i < source.A.block.size(); ++i)
        source.A.block[i] = {1.0 / (1.0 + double(i)), 0.3};
    const ZfVectorFreeElectron list = ListOf({source, SWave(0, 3e-10, 1e-10)});
    std::vector<ZfLmComplexTable> results;
    for (const int threads : {1, 2, 3}) {
        omp_set_num_threads(threads);
        results.push_back(Expand(list, 9, 0.01));
    }
    omp_set_num_threads(before);
    EXPECT_EQ(results[1].block, results[0].block);
    EXPECT_EQ(results[2].block, results[0].block);
}
