#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "Clusters.h"
#include "ErrorText.h"
#include "multiple/FullScattering.h"
#include "multiple/PhaseShiftGuard.h"

namespace {

/// Says so from the given question on.
class StopAt : public ZfNotifyTerminate {
public:
    explicit StopAt(int question) : left_(question) {}
    bool IsTerminated() override { return --left_ <= 0; }

private:
    int left_;
};

}  // namespace

// Phase shifts with rounding where the true ones have died out: cut there, and then as if they had been given
// so.
TEST(FullScatteringGuards, CutsPhaseShiftsThatSpoilTheSolution) {
    FullScatteringRequest honest = FccCluster(6, 9);
    FullScatteringRequest spoilt = honest;
    for (int i = 0; i < 10; ++i) spoilt.listOfSpecies[0].t.emplace_back(0.0, 2e-5);
    const FullScattering truth = Solved(honest);
    const FullScattering solution = Solved(spoilt);
    EXPECT_TRUE(truth.cuts.empty());
    ASSERT_EQ(solution.cuts.size(), 1);
    EXPECT_EQ(solution.cuts[0].name, "M");
    EXPECT_EQ(solution.cuts[0].given, 19);
    // Some of the small ones do no harm yet.
    EXPECT_GE(solution.cuts[0].used, 9);
    EXPECT_LE(solution.cuts[0].used, 13);
    for (std::size_t i = 0; i < truth.waves[0].size(); ++i)
        for (std::size_t j = 0; j < truth.waves[0][i].block.size(); ++j)
            EXPECT_LT(std::abs(truth.waves[0][i].block[j] - solution.waves[0][i].block[j]), 1e-3);
}

// S_Ll(x) for l = 0 has the closed form sqrt(2L+1) |h_L(x)|, and it is largest at m = 0, the only m.
TEST(FullScatteringGuards, MeasuresTheGrowthOfTheTranslation) {
    constexpr std::size_t lSize = 12;
    const auto largest = LargestCoaxial(7.0, lSize);
    for (unsigned L = 0; L < lSize; ++L) {
        const double h = std::hypot(std::sph_bessel(L, 7.0), std::sph_neumann(L, 7.0));
        EXPECT_NEAR(largest[L] / (std::sqrt(2.0 * L + 1.0) * h), 1.0, 1e-12);
        EXPECT_EQ(largest[L], largest[L * lSize]);
    }
    EXPECT_TRUE(std::isinf(LargestCoaxial(0.5, 90).back()));
}

TEST(FullScatteringGuards, RefusesWhatHasNoSolution) {
    using R = FullScatteringRequest&;
    const std::pair<const char*, std::function<void(R)>> cases[] = {
        {"there are no atoms", [](R r) { r.positions.clear(), r.species.clear(); }},
        {"not every atom has a species", [](R r) { r.species.pop_back(); }},
        {"an atom of a species that is not listed", [](R r) { r.species[2] = 3; }},
        {"the wave number is not a positive number", [](R r) { r.k = std::nan(""); }},
        {"the mean free path is negative", [](R r) { r.meanFreePath = -1.0; }},
        {"the tolerance is not between 1e-14 and 1", [](R r) { r.tolerance = 0.0; }},
        {"a wave from an atom that is not there", [](R r) { r.waves[0].emitter = 7; }},
        {"the emitted wave is not finite", [](R r) { r.waves[0].table.block[0] = HUGE_VAL; }},
        {"the phase shifts of B are not finite", [](R r) { r.listOfSpecies[1].t[0] = std::nan(""); }},
        {"atoms 1 and 5 are 0.4 angstrom apart",
         [](R r) {
             r.positions[4] = {0.0, 0.0, 0.4 * kAngstrom};
         }},
        // A wide atom far too close to its like: no cut makes sense of it.
        {"the phase shifts of A at l = 4 and A at l = 4 cannot be right for atoms 0.7 angstrom apart",
         [](R r) {
             r.positions[3] = {1.9 * kAngstrom, 0.3 * kAngstrom, 1.9 * kAngstrom};
             r.listOfSpecies[0].t.assign(5, {0.0, 0.5});
         }},
        {"the residual is still ", [](R r) { r.tolerance = 1e-12, r.largestApplications = 3; }}};
    for (const auto& [text, change] : cases) {
        FullScatteringRequest request = MixedCluster(0.0);
        request.waves = {{0, SWaveTable()}};
        change(request);
        EXPECT_TRUE(ErrorText([&] { Solved(request); }).starts_with(std::string("Full scattering: ") + text))
            << text;
    }
}

TEST(FullScatteringGuards, OneAtomAndAtomsWithoutPhaseShiftsScatterNothing) {
    FullScatteringRequest one = MixedCluster(0.0);
    one.positions.resize(1);
    one.species.resize(1);
    one.waves = {{0, SWaveTable()}};
    FullScatteringRequest empty = MixedCluster(0.0);
    for (ScatteringSpecies& species : empty.listOfSpecies) species.t.assign(3, 0.0);
    empty.listOfSpecies[1].t.clear();
    empty.waves = {{0, SWaveTable()}};
    for (const FullScatteringRequest& request : {one, empty}) {
        const FullScattering solution = Solved(request);
        EXPECT_EQ(solution.applications, 0);
        EXPECT_EQ(solution.residual[0], 0.0);
        ASSERT_EQ(solution.waves[0].size(), request.positions.size());
        for (const ZfLmComplexTable& table : solution.waves[0])
            for (const Complex a : table.block) EXPECT_EQ(a, 0.0);
        EXPECT_GE(EstimateFullScattering(request).seconds, 0.0);
    }
}

// One transparent species among others, and one wave of nothing among others: as if they were not there.
TEST(FullScatteringGuards, WhatIsNothingChangesNothing) {
    FullScatteringRequest request = MixedCluster(0.0);
    request.listOfSpecies[2].t.clear();
    request.waves = {{0, ZfLmComplexTable(2)}, {0, SWaveTable()}};
    FullScatteringRequest without = request;
    without.waves = {{0, SWaveTable()}};
    without.positions.clear();
    without.species.clear();
    for (std::size_t i = 0; i < request.species.size(); ++i) {
        if (request.species[i] == 2) continue;
        without.positions.push_back(request.positions[i]);
        without.species.push_back(request.species[i]);
    }
    const FullScattering solution = Solved(request);
    std::vector<ZfLmComplexTable> scattered = solution.waves[1];
    std::erase_if(scattered, [](const ZfLmComplexTable& table) { return table.L == 0; });
    const std::vector<ZfLmComplexTable> truth = Solved(without).waves[0];
    ASSERT_EQ(scattered.size(), truth.size());
    EXPECT_LT(Difference(scattered, truth), 1e-12);
    for (const ZfLmComplexTable& table : solution.waves[0])
        for (const Complex a : table.block) EXPECT_EQ(a, 0.0);
}

TEST(FullScatteringGuards, TellsItsProgressAndStopsWhenAsked) {
    FullScatteringRequest request = FccCluster(6, 7);
    std::vector<FullScatteringProgress> steps;
    ZfNotifyTerminateThreadCalculation never;
    const FullScattering solution = SolveFullScattering(
        request, never, [&](const FullScatteringProgress& step) { steps.push_back(step); });
    ASSERT_EQ(steps.size(), static_cast<std::size_t>(solution.applications));
    for (std::size_t i = 1; i < steps.size(); ++i) EXPECT_LE(steps[i].residual, steps[i - 1].residual);
    EXPECT_LE(steps.back().residual, request.tolerance);
    EXPECT_LE(solution.residual[0], 2.0 * request.tolerance);
    for (const int question : {1, 5, 40}) {
        StopAt stop(question);
        const FullScattering stopped = SolveFullScattering(request, stop);
        EXPECT_TRUE(stopped.interrupted) << question;
        EXPECT_TRUE(stopped.waves.empty());
    }
}

TEST(FullScatteringGuards, EstimatesGrowWithTheWork) {
    FullScatteringRequest small = FccCluster(6, 8);
    FullScatteringRequest large = FccCluster(30, 8);
    const FullScatteringEstimate a = EstimateFullScattering(small);
    const FullScatteringEstimate b = EstimateFullScattering(large);
    EXPECT_GT(b.seconds, a.seconds);
    EXPECT_GT(b.bytes, 5.0 * a.bytes);
    large.meanFreePath = 5.0 * kAngstrom;
    EXPECT_LT(EstimateFullScattering(large).applications, b.applications);
}
