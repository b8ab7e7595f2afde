#include "multiple/FullScattering.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "ChainOfFive.h"
#include "Clusters.h"
#include "EveryTarget.h"
#include "multiple/ScatteringOperator.h"
#include "reference/PlainFullScattering.h"

namespace {

INSTANTIATE_TEST_SUITE_P(FullScattering, EveryTarget, AllTargets(), TargetName);

FullScatteringRequest ChainRequest() {
    FullScatteringRequest request;
    request.k = chain::kWaveNumber;
    for (int i = 0; i < 5; ++i) request.positions.push_back({0.0, 0.0, i * chain::kDistance_m});
    request.species.assign(5, 0);
    request.listOfSpecies = {{"Cu", ScatteringFactors(std::vector<Complex>(chain::kPhaseShifts.begin(),
                                                                           chain::kPhaseShifts.end()))}};
    request.waves = {{0, SWaveTable()}};
    return request;
}

/// Against the intensity of the emitted s wave, 1 / (4 pi).
double ChainIntensity(const FullScatteringRequest& request, const std::vector<ZfLmComplexTable>& tables,
                      double theta_deg) {
    return std::norm(FarFieldOf(request, tables, request.waves[0], theta_deg * kDegree, 0.0)) * 4.0 * kPi;
}

constexpr double kChainDigits = 2e-4;

}  // namespace

TEST(FullScattering, SolvesTheChainOfFive) {
    const FullScatteringRequest request = ChainRequest();
    const FullScattering solution = Solved(request);
    EXPECT_TRUE(solution.cuts.empty());
    for (const auto& direction : chain::kDirections)
        EXPECT_NEAR(ChainIntensity(request, solution.waves[0], direction.theta_deg), direction.full,
                    kChainDigits)
            << direction.theta_deg;
}

// The paths of 1 to 5 steps one by one: the operator alone.
TEST_P(EveryTarget, SumsTheOrdersOfTheChain) {
    const FullScatteringRequest request = ChainRequest();
    Scatterers atoms;
    for (const Vec3& r : request.positions) atoms.positions.push_back({0.0, 0.0, request.k * r[2]});
    atoms.species = request.species;
    atoms.t = {request.listOfSpecies[0].t};
    ScatteringOperator scattering(atoms, {0.0, 0.0, 0.0}, 1);
    ClusterWave term = scattering.Emit(0, {Complex(1.0)}, 1);
    ClusterWave sum(term.size());
    for (std::size_t order = 0; order < 5; ++order) {
        if (order > 0) term = scattering.Scatter({term})[0];
        for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += term[i];
        std::vector<ZfLmComplexTable> tables;
        for (std::size_t a = 0; a < 5; ++a) {
            tables.emplace_back(static_cast<std::int32_t>(scattering.LSize(a)));
            for (std::size_t i = 0; i < tables[a].block.size(); ++i)
                tables[a].block[i] = sum[scattering.Offset(a) + i];
        }
        for (const auto& direction : chain::kDirections)
            EXPECT_NEAR(ChainIntensity(request, tables, direction.theta_deg), direction.order[order],
                        kChainDigits)
                << direction.theta_deg << ", order " << order + 1;
    }
}

// Species of different l size, phase shifts with losses, damping, emission of a larger l size than any atom
// has, and two emitters: the matrix written out.
TEST_P(EveryTarget, AgreesWithADenseSolution) {
    FullScatteringRequest request = MixedCluster(0.2);
    request.meanFreePath = 6.0 * kAngstrom;
    request.tolerance = 1e-13;
    request.waves = {{0, FullTable(8, 0.4)}, {3, FullTable(2, 1.9)}};
    const FullScattering solution = Solved(request);
    ASSERT_TRUE(solution.cuts.empty());
    static std::map<std::size_t, std::vector<ZfLmComplexTable>> dense;
    for (std::size_t w = 0; w < request.waves.size(); ++w) {
        if (!dense.contains(w)) dense[w] = plain::SolveFullScattering(request, request.waves[w]);
        EXPECT_LT(Difference(solution.waves[w], dense[w]), 1e-10) << w;
    }
}

// A quarter turn about the emitter of an s wave changes nothing but the phases of m.
TEST(FullScattering, KeepsTheSymmetryOfTheCluster) {
    const FullScatteringRequest request = FccCluster(10, 9);
    const FullScattering solution = Solved(request);
    const auto& r = request.positions;
    double difference = 0.0;
    std::size_t moved = 0;
    for (std::size_t i = 0; i < r.size(); ++i) {
        const auto turned = std::find_if(r.begin(), r.end(), [&](const Vec3& p) {
            return std::abs(p[0] + r[i][1]) + std::abs(p[1] - r[i][0]) + std::abs(p[2] - r[i][2]) < 1e-13;
        });
        ASSERT_NE(turned, r.end());
        const auto j = static_cast<std::size_t>(turned - r.begin());
        moved += i == j ? 0 : 1;
        for (std::int32_t l = 0; l < 9; ++l)
            for (std::int32_t m = -l; m <= l; ++m)
                difference = std::max(difference, std::abs(solution.waves[0][j].At(l, m) -
                                                           IPower(m) * solution.waves[0][i].At(l, m)));
    }
    EXPECT_GT(moved, 30);
    EXPECT_LT(difference, 1e-9);
}

TEST(FullScattering, IsTheSameForAnyOrderOfAtomsAndThreads) {
    FullScatteringRequest request = FccCluster(10, 9);
    request.listOfSpecies.push_back({"N", ScatteringFactors(SmoothPhases(7, 3.0, -0.7))});
    for (std::size_t i = 0; i < request.species.size(); i += 3) request.species[i] = 1;
    request.waves.push_back({0, FullTable(3, 0.4)});
    const int threads = omp_get_max_threads();
    omp_set_num_threads(1);
    const FullScattering first = Solved(request);
    for (const int other : {2, 3, 5}) {
        omp_set_num_threads(other);
        const FullScattering again = Solved(request);
        for (std::size_t w = 0; w < 2; ++w)
            for (std::size_t i = 0; i < request.positions.size(); ++i)
                ASSERT_EQ(again.waves[w][i].block, first.waves[w][i].block)
                    << other << " threads, atom " << i;
    }
    omp_set_num_threads(threads);

    FullScatteringRequest reversed = request;
    std::reverse(reversed.positions.begin(), reversed.positions.end());
    std::reverse(reversed.species.begin(), reversed.species.end());
    for (EmissionFromAtom& wave : reversed.waves) wave.emitter = request.positions.size() - 1;
    FullScattering other = Solved(reversed);
    for (std::size_t w = 0; w < 2; ++w) {
        std::reverse(other.waves[w].begin(), other.waves[w].end());
        EXPECT_LT(Difference(other.waves[w], first.waves[w]), 1e-9);
    }
}

// More waves than go through the pairs together, each as if it were alone.
TEST(FullScattering, SolvesManyWavesAtOnce) {
    FullScatteringRequest request = MixedCluster(0.0);
    request.tolerance = 1e-12;
    for (std::int32_t i = 0; i < 6; ++i) request.waves.push_back({0, FullTable(1 + i % 3, i)});
    const FullScattering together = Solved(request);
    for (const std::size_t w : {0U, 3U, 5U}) {
        FullScatteringRequest alone = request;
        alone.waves = {request.waves[w]};
        EXPECT_LT(Difference(together.waves[w], Solved(alone).waves[0]), 1e-10) << w;
    }
}

// With b = (1 - tG) A, tables s A leave out (s - 1) b.
TEST(FullScattering, MissingScatteringIsTheResidual) {
    FullScatteringRequest request = MixedCluster(0.02);
    request.waves = {{3, FullTable(3, 0.4)}};
    request.tolerance = 1e-11;
    std::vector<std::vector<ZfLmComplexTable>> tables = Solved(request).waves;
    EXPECT_LT(MissingScattering(request, tables)[0], 1e-10);
    std::vector<double> missing;
    for (const double factor : {2.0, 1.5}) {
        for (ZfLmComplexTable& table : tables[0])
            for (Complex& a : table.block) a *= factor;
        missing.push_back(MissingScattering(request, tables)[0]);
    }
    EXPECT_GT(missing[0], 0.1);
    EXPECT_NEAR(missing[1] / missing[0], 4.0 / 3.0, 1e-8);
}
