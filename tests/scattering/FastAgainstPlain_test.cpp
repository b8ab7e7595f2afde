#include <gtest/gtest.h>
#include <omp.h>

#include "Cluster.h"
#include "Tables.h"
#include "reference/PlainExpansion.h"
#include "reference/PlainScattering.h"
#include "scattering/ScattererLists.h"
#include "scattering/ZfSphereExpansion.h"

// The vectorised calculation against its formulas written out, the same points and levels in both.

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSlowBuild = true;
#else
constexpr bool kSlowBuild = false;
#endif

constexpr double kRounding = 1e-10;

plain::Scattering Scattered(ZfScatteringRecord record, const ZfPhaseShiftDocument& phaseShifts,
                            ScatteringMethod method) {
    plain::Scattering result;
    ZfScatteringData data;
    testing::internal::CaptureStdout();
    for (std::int32_t at = 0; at < std::ssize(record.atomLabels); ++at) {
        if (method == kMulti) data.OneCalculateVer2(record, phaseShifts, 0, at);
        if (method == kSlowMulti) data.CalculateSlowMulti(record, phaseShifts, 0, at);
        result.tables.push_back(record.NextListScatterer.electrons[static_cast<std::size_t>(at)].A);
        result.levels.push_back(data.lastLevel);
    }
    testing::internal::GetCapturedStdout();
    return result;
}

}  // namespace

TEST(FastAgainstPlain, Expansions) {
    ZfSphereExpansion expansion;
    expansion.tolerance = 0.01;
    for (const std::int32_t lSize :
         kSlowBuild ? std::vector{1, 8, 9, 16} : std::vector{1, 2, 7, 8, 9, 15, 16, 21, 25}) {
        const ZfVectorFreeElectron list =
            ListOf({FullSource(lSize, 5e-10, 0, 1e-10), SWave(-3e-10, 4e-10, 0)});
        list.PrepareNorms();
        const ZfWaveVectorFreeElectron wave(&list);
        const plain::Expansion truth = plain::Expand(wave, lSize, expansion.tolerance);
        expansion.lSize = lSize;
        ZfLmComplexTable result;
        expansion.Expand(result, wave, 2e-10);
        EXPECT_LE(Difference(result, truth.coefficients), kRounding) << lSize;
        EXPECT_EQ(expansion.level, truth.level) << lSize;
    }
}

TEST(FastAgainstPlain, ScatteringWithAnyNumberOfThreads) {
    Cluster cluster = ClusterOf({});
    std::vector<ClusterAtom>& atoms = cluster.structures[0].atoms;
    for (int i = 0; i < 27; ++i) {  // fcc, in steps of half the lattice constant
        const int x = i % 3 - 1, y = i / 3 % 3 - 1, z = -(i / 9);
        if ((x + y + z) % 2 == 0) atoms.push_back(AtomAt("Cu", 1.8 * x, 1.8 * y, 1.8 * z));
    }
    ZfPhaseShiftDocument phaseShifts;
    phaseShifts.records = {PhaseShiftOf("Cu", kSlowBuild ? 4 : 9, 1.2)};
    ZfScatteringData data;
    const ZfScatteringRecord& record =
        AddScatteringRecord(data, cluster, 0, {EmittedSWave()}, 0, phaseShifts);
    const int before = omp_get_max_threads();
    for (const ScatteringMethod method : {kMulti, kSlowMulti}) {
        const plain::Scattering truth = plain::Scatter(record, phaseShifts, method, data.EPS);
        omp_set_num_threads(1);
        const plain::Scattering one = Scattered(record, phaseShifts, method);
        EXPECT_EQ(std::vector(one.levels.begin() + 1, one.levels.end()),
                  std::vector(truth.levels.begin() + 1, truth.levels.end()));
        for (std::size_t i = 1; i < atoms.size(); ++i)
            EXPECT_LE(Difference(one.tables[i], truth.tables[i]), kRounding) << i;
        for (const int threads : {2, 3}) {
            omp_set_num_threads(threads);
            const plain::Scattering more = Scattered(record, phaseShifts, method);
            for (std::size_t i = 0; i < atoms.size(); ++i)
                EXPECT_EQ(more.tables[i].block, one.tables[i].block) << threads << " threads, atom " << i;
        }
        omp_set_num_threads(before);
    }
}
