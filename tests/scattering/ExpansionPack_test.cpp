#include "scattering/ExpansionPack.h"

#include <gtest/gtest.h>

#include <limits>

#include "Cluster.h"
#include "EveryTarget.h"
#include "Tables.h"
#include "reference/PlainScattering.h"

// Translated waves against sampled ones: the same quadrature, so the same levels and, but for rounding,
// tables.

namespace {

constexpr double kTolerance = 0.01;
constexpr double kRounding = 1e-12;

struct Target {
    std::vector<ZfFreeElectron> sources;  ///< around the target
};

/// The sources of eight targets, one after the other.
std::array<ExpandedWave, kTranslationPack> Expand(const std::vector<Target>& targets, std::int32_t lSize,
                                                  double nearTie, std::array<bool, kTranslationPack>& done) {
    ExpansionScratch scratch;
    ExpansionPack pack(std::make_shared<const ExpansionTables>(lSize), kTolerance, nearTie);
    std::array<bool, kTranslationPack> chosen{};
    for (std::size_t s = 0; s < 4; ++s) {
        ExpansionPack::Row row;
        for (std::size_t lane = 0; lane < targets.size(); ++lane) {
            chosen[lane] = true;
            const std::vector<ZfFreeElectron>& sources = targets[lane].sources;
            if (s >= sources.size()) continue;
            const double* const p = sources[s].position.Data();
            row[lane] = {&sources[s], {p[0], p[1], p[2]}};
        }
        pack.Add(row, scratch);
    }
    std::array<ExpandedWave, kTranslationPack> waves;
    done = pack.Expand(chosen, waves, scratch);
    return waves;
}

ExpandedWave Sampled(const Target& target, std::int32_t lSize) {
    ExpansionScratch scratch;
    const ZfVectorFreeElectron list = ListOf(target.sources);
    return SampleWave(list, std::make_shared<const ExpansionTables>(lSize), kTolerance, scratch);
}

ZfFreeElectron PlaneWave() {
    ZfFreeElectron wave = SourceOf(1, 1e-10, 2e-10, 0.0);
    wave.SetPlaneWave(Vector3(0.3, -0.2, 0.9), {0.5, -1.5});
    return wave;
}

class Packs : public EveryTarget {};

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, Packs, AllTargets(), TargetName);

}  // namespace

// Several sources of several sizes around each target; some too near to be translated, some not waves of an
// atom.
TEST_P(Packs, AgreeWithSamples) {
    for (const std::int32_t lSize : {1, 2, 8, 9, 14, 21}) {
        const double r = lSize > 14 ? 1.6 : 1.0;  // outside the spheres
        const auto far = [&](std::int32_t l, double x, double y, double z) {
            return FullSource(l, x * r * 1e-10, y * r * 1e-10, z * r * 1e-10);
        };
        const std::vector<Target> targets = {
            {{far(3, 2.5, 0, 0)}},
            {{far(5, 0, 0, 3), far(14, -4, 5, 1)}},
            {{far(1, -2, 2, 1), far(9, 0, -6, 1), far(2, 9, 9, -9), far(4, 0, 0, -8)}},
            {{far(6, 3, -4, 2), SourceOf(0, 1e-10, 0, 0), SourceOf(4, 3e-10, 0, 0)}},
            {{far(6, 3, -4, 2), PlaneWave()}},
            {{PlaneWave()}},
            {{far(2, 0.9, 1.1, 0.2), far(3, 0, 4, 0)}},
        };
        std::array<bool, kTranslationPack> done{};
        const auto waves = Expand(targets, lSize, kNearTie, done);
        for (std::size_t i = 0; i < targets.size(); ++i) {
            SCOPED_TRACE("l size " + std::to_string(lSize) + ", target " + std::to_string(i));
            if (i == 5) {
                EXPECT_FALSE(done[i]) << "a wave without a translated source";
                continue;
            }
            ASSERT_TRUE(done[i]);
            const ExpandedWave truth = Sampled(targets[i], lSize);
            EXPECT_EQ(waves[i].level, truth.level);
            EXPECT_LT(Difference(waves[i].table, truth.table), kRounding);
            EXPECT_NEAR(waves[i].lastError, truth.lastError, 1e-9 * kTolerance);
        }
        EXPECT_FALSE(done.back()) << "no target";
    }
}

// Every level against the sum over its points, up to the last that is synthesised. The low ones fold many
// orders.
TEST(LevelSynthesis, GivesTheIntegralOfEveryLevel) {
    constexpr std::int32_t lSize = 11;
    const auto tables = std::make_shared<const ExpansionTables>(lSize);
    const ZfVectorFreeElectron list = ListOf({FullSource(5, 1.9e-10, -1.0e-10, 0.7e-10)});
    ExpansionScratch scratch;
    scratch.geometry.Clear();
    scratch.geometry.Set(3, list.electrons[0].position.Data(), list.electrons[0].k);
    constexpr std::int32_t order = 90;
    scratch.geometry.CalculateRadial(order + 5);
    PackedTable source(25);
    for (std::size_t i = 0; i < source.size(); ++i) source[i].Set(3, list.electrons[0].A.block[i]);
    PackedTable waves(order * order);
    AddTranslated(source, 5, scratch.geometry, order, waves, scratch.translation);
    LevelSynthesis synthesis;
    synthesis.Start(*tables, waves, {order, order});

    ZfSphereExpansion& sampled = scratch.Direct(tables);
    const ZfWaveVectorFreeElectron wave(&list);
    sampled.Begin(wave);
    ZfLmComplexTable integral;
    for (sampled.level = 0; sampled.level <= kLastSynthesisedLevel; ++sampled.level) {
        sampled.LevelIntegral(integral);
        if (sampled.level < kFirstSynthesisedLevel) continue;
        ASSERT_TRUE(synthesis.Serves(sampled.level));
        ZfLmComplexTable synthesised(lSize);
        for (std::size_t i = 0; i < synthesised.block.size(); ++i)
            synthesised.block[i] = synthesis.Level(sampled.level)[i].Get(3);
        EXPECT_LT(Difference(synthesised, integral), kRounding) << "level " << sampled.level;
    }
    EXPECT_FALSE(synthesis.Serves(sampled.level));
    sampled.End();
}

TEST(ExpansionPack, LeavesNearTiesToTheSamples) {
    const Target target = {{FullSource(5, 2.5e-10, 0, 0)}};
    std::array<bool, kTranslationPack> done{};
    const double error = Expand({target}, 9, kNearTie, done)[0].lastError;
    EXPECT_TRUE(done[0]);
    ASSERT_LT(error, kTolerance);
    Expand({target}, 9, 1.01 * (kTolerance - error) / kTolerance, done);  // the nearest or one nearer
    EXPECT_FALSE(done[0]);
    Expand({target}, 9, std::numeric_limits<double>::infinity(), done);
    EXPECT_FALSE(done[0]);
}

// Every decision taken for a near tie, or only the near ones: the run must give the waves of the formulas.
TEST(ExpansionPack, TranslatesASampledRun) {
    Cluster cluster = ClusterOf({AtomAt("Cu", 0, 0, 0), AtomAt("Cu", 0, 0, 2.6), AtomAt("other", 2.5, 0.4, 0),
                                 AtomAt("Cu", 5.1, 0.7, 0.1), AtomAt("other", 0.2, 0.1, 5.5),
                                 AtomAt("Cu", 7.4, 1.3, 0.3), AtomAt("Cu", 0, 0, -4)});
    ZfPhaseShiftDocument phaseShifts;
    phaseShifts.records = {PhaseShiftOf("Cu", 7, 1.2), PhaseShiftOf("other", 10, 1.4)};
    std::vector<EmittedWave> waves = {EmittedSWave(), EmittedSWave(), EmittedSWave()};
    waves[1].coeff.SetSize(2);
    waves[1].coeff.At(1, 0) = {0.3, -1.0};
    waves[2].IsPlaneWave = true;
    const auto run = [&](double nearTie) {
        ZfScatteringData data;
        data.Version = kSlowMulti;
        data.MultiScattering = 1;
        data.nearTie = nearTie;
        ZfNotifyTerminateThreadCalculation notifier;
        testing::internal::CaptureStdout();
        data.Calculate(notifier, cluster, waves, phaseShifts);
        testing::internal::GetCapturedStdout();
        return data.ListScatteringData;
    };
    const auto sampled = run(1e9);
    const auto translated = run(kNearTie);
    double difference = 0.0;
    for (std::size_t r = 0; r < waves.size(); ++r) {
        const auto truth = plain::Scatter(sampled[r], phaseShifts, kSlowMulti, kTolerance).tables;
        for (std::size_t n = 1; n < 7; ++n) {
            const ZfLmComplexTable& here = sampled[r].NextListScatterer.electrons[n].A;
            const ZfLmComplexTable& there = translated[r].NextListScatterer.electrons[n].A;
            EXPECT_LT(Difference(here, truth[n]), 1e-10) << r << ", " << n;
            EXPECT_LT(Difference(there, here), kRounding) << r << ", " << n;
            difference = std::max(difference, Difference(there, here));
        }
    }
    EXPECT_GT(difference, 0.0) << "nothing was translated";
}
