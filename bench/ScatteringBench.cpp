#include <benchmark/benchmark.h>

#include "Copper.h"
#include "foundation/Console.h"

namespace {

constexpr std::int32_t kLSize = 15;

using OneAtom = void (ZfScatteringData::*)(ZfScatteringRecord&, const ZfPhaseShiftDocument&, std::int32_t,
                                           std::int32_t);

// One pass over all atoms of a cluster, with one emitted wave.
void Scattering(benchmark::State& state, OneAtom calculate) {
    const ConsoleRedirection quiet(nullptr);
    const ZfPhaseShiftDocument phaseShifts = copper::PhaseShifts(kLSize);
    const ZfScatteringRecord unscattered =
        copper::Record(static_cast<std::size_t>(state.range(0)), phaseShifts);
    const auto atoms = static_cast<std::int32_t>(unscattered.atomLabels.size());
    for (auto _ : state) {
        ZfScatteringRecord record = unscattered;
        ZfScatteringData data;
        for (std::int32_t i = 0; i < atoms; ++i) (data.*calculate)(record, phaseShifts, 0, i);
        benchmark::DoNotOptimize(record.NextListScatterer.electrons.data());
    }
    state.counters["atoms"] = atoms;
}
BENCHMARK_CAPTURE(Scattering, Multi, &ZfScatteringData::OneCalculateVer2)
    ->ArgName("atoms")
    ->Arg(20)
    ->Arg(60)
    ->Arg(200)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scattering, SlowMulti, &ZfScatteringData::CalculateSlowMulti)
    ->ArgName("atoms")
    ->Arg(20)
    ->Arg(60)
    ->Arg(200)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
