#include <benchmark/benchmark.h>

#include <complex>

#include "scattering/LevelSynthesis.h"
#include "scattering/WaveTranslation.h"

using namespace qvre;

namespace {

constexpr double kWaveNumber = 19.3;  // 1420 eV, per angstrom: all lengths here are angstrom

PackedTable FullTable(std::int32_t size) {
    PackedTable table(static_cast<std::size_t>(size) * static_cast<std::size_t>(size));
    for (std::size_t i = 0; i < table.size(); ++i)
        for (std::size_t lane = 0; lane < kTranslationPack; ++lane)
            table[i].Set(lane, std::polar(1e-3, 0.7 * static_cast<double>(i + lane)));
    return table;
}

// Eight sources translated to eight targets.
void Translation(benchmark::State& state) {
    const auto lSize = static_cast<std::int32_t>(state.range(0));
    const auto order = static_cast<std::int32_t>(state.range(1));
    const PackedTable sources = FullTable(lSize);
    PackedTable targets = FullTable(order);
    TranslationGeometry geometry;
    TranslationScratch scratch;
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        const double x = 2.1 + static_cast<double>(lane);
        const double displacement[] = {x, 1.0, 0.5 - 0.3 * x};
        geometry.Set(lane, displacement, kWaveNumber);
    }
    for (auto _ : state) {
        geometry.CalculateRadial(order + lSize);
        AddTranslated(sources, lSize, geometry, order, targets, scratch);
        benchmark::DoNotOptimize(targets.data());
    }
    // Fused multiply-adds of one pair: two turns of each degree on both sides, and the coaxial translation
    // with its coefficients.
    double pair = 0.0;
    for (double l = 0; l < lSize; ++l) pair += 4.0 * (l + 1.0) * (l + 1.0);
    for (double L = 0; L < order; ++L)
        pair += 2.0 * (L + 1.0) * (L + 1.0) + 2.0 * std::min<double>(lSize, L + 1.0) * (L + 1.0);
    for (double m = 0; m < lSize; ++m) pair += 14.0 * (lSize - m) * (order - m);
    state.counters["GFMA/s"] = benchmark::Counter(pair * static_cast<double>(kTranslationPack) * 1e-9,
                                                  benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(Translation)
    ->ArgNames({"l", "order"})
    ->Args({10, 32})
    ->Args({14, 40})
    ->Args({21, 56})
    ->Args({25, 72})
    ->Args({20, 20})
    ->Unit(benchmark::kMicrosecond);

// The levels up to 12, or 13 from l size 20 on, of eight targets.
void Synthesis(benchmark::State& state) {
    const auto lSize = static_cast<std::int32_t>(state.range(0));
    const auto order = static_cast<std::int32_t>(state.range(1));
    const ExpansionTables tables(lSize);
    const PackedTable waves = FullTable(order);
    const std::vector<std::int32_t> orders(static_cast<std::size_t>(tables.grid.Groups()), order);
    LevelSynthesis synthesis;
    for (auto _ : state) {
        synthesis.Start(tables, waves, orders);
        benchmark::DoNotOptimize(synthesis.Level(lSize < 20 ? 12 : 13).data());
    }
}
BENCHMARK(Synthesis)
    ->ArgNames({"l", "order"})
    ->Args({10, 32})
    ->Args({14, 40})
    ->Args({21, 56})
    ->Args({25, 72})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
