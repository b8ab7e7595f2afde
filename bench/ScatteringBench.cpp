#include <benchmark/benchmark.h>

#include "Copper.h"
#include "foundation/Console.h"

using namespace qvre;

namespace {

constexpr std::int32_t kLSize = 15;

constexpr std::size_t kWaves = 3;

// A run over all atoms of a cluster, with the waves of one line.
void Scattering(benchmark::State& state, ScatteringMethod method) {
    const ConsoleRedirection quiet(nullptr);
    const ZfPhaseShiftDocument phaseShifts = copper::PhaseShifts(kLSize);
    const std::vector<EmittedWave> waves = copper::EmittedWaves(kWaves);
    Cluster cluster = copper::ClusterOf(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        ZfScatteringData data;
        data.Version = method;
        data.MultiScattering = 1;
        ZfNotifyTerminateThreadCalculation notifier;
        data.Calculate(notifier, cluster, waves, phaseShifts);
        benchmark::DoNotOptimize(data.ListScatteringData.data());
    }
    state.counters["atoms"] = static_cast<double>(cluster.structures.front().atoms.size());
}
BENCHMARK_CAPTURE(Scattering, Multi, kMulti)
    ->ArgName("atoms")
    ->Arg(20)
    ->Arg(60)
    ->Arg(200)
    ->Arg(600)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scattering, SlowMulti, kSlowMulti)
    ->ArgName("atoms")
    ->Arg(20)
    ->Arg(60)
    ->Arg(200)
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
