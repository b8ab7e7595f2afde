#include <benchmark/benchmark.h>

#include "Copper.h"
#include "scattering/ZfSphereExpansion.h"

namespace {

constexpr double kRadius_m = 2e-10;
constexpr double kTolerance = 0.01;
constexpr std::size_t kAtoms = 60;

/// The first atoms around the emitter, as the next one sees them.
ZfVectorFreeElectron SourcesAroundAtom(std::size_t sources, std::int32_t lSize) {
    ZfScatteringData data = copper::ScatteredData(kAtoms, lSize);
    ZfVectorFreeElectron& list = data.ListScatteringData.front().ListScatterer;
    list.electrons.resize(sources + 2);
    list.electrons.erase(list.electrons.begin());  // only atoms: tables of equal size
    ZfVectorFreeElectron seen;
    list.ShiftOrigin(seen, static_cast<std::int32_t>(sources));
    seen.SetEnergy_eV(list.Ek_eV);
    seen.PrepareNorms();
    return seen;
}

// The wave of some sources expanded around one atom.
void Expansion(benchmark::State& state) {
    const auto lSize = static_cast<std::int32_t>(state.range(0));
    const ZfVectorFreeElectron seen = SourcesAroundAtom(static_cast<std::size_t>(state.range(1)), lSize);
    const ZfWaveVectorFreeElectron wave(&seen);
    ZfLmComplexTable table;
    std::int32_t level = 0;
    for (auto _ : state) {
        ZfSphereExpansion expansion;
        expansion.tolerance = kTolerance;
        expansion.lSize = lSize;
        expansion.Expand(table, wave, kRadius_m);
        benchmark::DoNotOptimize(table.block.data());
        level = expansion.level;
    }
    state.counters["level"] = level;
}
BENCHMARK(Expansion)
    ->ArgNames({"l", "sources"})
    ->ArgsProduct({{10, 15, 20, 25}, {1, 5, 20}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
