#include <benchmark/benchmark.h>

#include "Copper.h"
#include "foundation/Console.h"
#include "pattern/ZfDocPattern.h"

using namespace qvre;

namespace {

constexpr std::int32_t kLSize = 15;

// The pattern stage on one record, damped by vibrations and the mean free path.
template <class Map>
void Pattern(benchmark::State& state) {
    const ConsoleRedirection quiet(nullptr);
    ZfScatteringData data = copper::ScatteredData(static_cast<std::size_t>(state.range(0)), kLSize);
    const Fluctuation fluctuation = copper::RoomTemperature();
    const ZfDebye debye = copper::Weights();
    Map pattern;
    pattern.resolution = 1.0 / static_cast<double>(state.range(1));
    pattern.meanFreePath = copper::kMeanFreePath_m;
    pattern.mfpByEmitterDistance = true;
    pattern.ActivateAll(1);
    ZfNotifyTerminateThreadCalculation notifier;
    for (auto _ : state) {
        pattern.Calculate(notifier, data, fluctuation, debye);
        benchmark::DoNotOptimize(pattern.mapping.planes.data());
    }
    const double amplitudes = static_cast<double>(pattern.mapping.pixelWeight.Count()) *
                              static_cast<double>(data.ListScatteringData.front().atomLabels.size());
    state.counters["pixels x atoms"] =
        benchmark::Counter(amplitudes, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(Pattern<ZfDocPattern_AzimuthalEquidistant>)
    ->ArgNames({"atoms", "pixels_per_degree"})
    ->ArgsProduct({{200, 1000}, {1, 2}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Pattern<ZfDocPattern_EquidistantCylindrical>)
    ->ArgNames({"atoms", "pixels_per_degree"})
    ->ArgsProduct({{200, 1000}, {1, 2}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
