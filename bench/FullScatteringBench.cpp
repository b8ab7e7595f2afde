#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>

#include "multiple/FullScattering.h"
#include "reference/PlainFullScattering.h"

using namespace qvre;

namespace {

constexpr double kAngstrom = 1e-10;  // m

struct Metal {
    double cube;  ///< angstrom
    double k;     ///< per angstrom
    std::int32_t lSize;
    double reach;  ///< l at which the phase shifts have fallen to a third
};
constexpr Metal kSilver747 = {4.09, 14.0, 20, 9.5};
constexpr Metal kCopper100 = {3.615, 5.1, 8, 3.5};
constexpr Metal kCopper551 = {3.615, 12.03, 18, 8.0};
constexpr Metal kCopper1400 = {3.615, 19.17, 22, 11.0};

/// An fcc(001) hemisphere in whole shells around the emitter, with phase shifts that swing at low l and die
/// out at k times the radius of an atom, and as many of the unit waves of l = 1 as wanted; an s wave if one.
FullScatteringRequest Hemisphere(const Metal& metal, std::size_t atoms, std::int32_t waves,
                                 double meanFreePath_angstrom) {
    struct Site {
        int square;
        Vec3 r;
    };
    std::vector<Site> sites;
    constexpr int kReach = 12;
    for (int x = -kReach; x <= kReach; ++x)
        for (int y = -kReach; y <= kReach; ++y)
            for (int z = 0; z <= kReach; ++z)
                if ((x + y + z) % 2 == 0) {
                    const double a = 0.5 * metal.cube * kAngstrom;
                    sites.push_back({x * x + y * y + z * z, {a * x, a * y, a * z}});
                }
    std::stable_sort(sites.begin(), sites.end(),
                     [](const Site& p, const Site& q) { return p.square < q.square; });
    FullScatteringRequest request;
    request.k = metal.k / kAngstrom;
    request.meanFreePath = meanFreePath_angstrom * kAngstrom;
    for (std::size_t i = 0; i < sites.size(); ++i) {
        if (i >= atoms && sites[i].square != sites[i - 1].square) break;
        request.positions.push_back(sites[i].r);
    }
    request.species.assign(request.positions.size(), 0);
    std::vector<std::complex<double>> phases;
    for (std::int32_t l = 0; l < metal.lSize; ++l)
        phases.emplace_back(2.2 * std::cos(0.9 * l) * std::exp(-l / 3.0) +
                            1.6 * std::exp(-(l / metal.reach) * (l / metal.reach)));
    request.listOfSpecies = {{"M", ScatteringFactors(phases)}};
    for (std::int32_t w = 0; w < waves; ++w) {
        ZfLmComplexTable table(waves == 1 ? 1 : 2);
        table.block[static_cast<std::size_t>(waves == 1 ? 0 : 1 + w)] = 1.0;
        request.waves.push_back({0, table});
    }
    return request;
}

// The whole solution, with the processor time of all threads.
void FullMultipleScattering(benchmark::State& state, const Metal& metal) {
    const FullScatteringRequest request =
        Hemisphere(metal, static_cast<std::size_t>(state.range(0)), static_cast<std::int32_t>(state.range(1)),
                   static_cast<double>(state.range(2)));
    ZfNotifyTerminateThreadCalculation notifier;
    FullScattering solution;
    for (auto _ : state) {
        solution = SolveFullScattering(request, notifier);
        benchmark::DoNotOptimize(solution.waves.data());
    }
    state.counters["atoms"] = static_cast<double>(request.positions.size());
    state.counters["applications"] = solution.applications;
    state.counters["cuts"] = static_cast<double>(solution.cuts.size());
}
BENCHMARK_CAPTURE(FullMultipleScattering, Copper100, kCopper100)
    ->ArgNames({"atoms", "waves", "mfp"})
    ->Args({13, 1, 0})
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FullMultipleScattering, Copper551, kCopper551)
    ->ArgNames({"atoms", "waves", "mfp"})
    ->Args({18, 1, 0})
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FullMultipleScattering, Silver747, kSilver747)
    ->ArgNames({"atoms", "waves", "mfp"})
    ->Args({82, 1, 0})
    ->Args({82, 3, 0})
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FullMultipleScattering, Copper1400, kCopper1400)
    ->ArgNames({"atoms", "waves", "mfp"})
    ->Args({207, 3, 0})
    ->Args({581, 3, 0})
    ->Args({581, 3, 10})
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

// The same by a matrix, element by element.
void MatrixOfFullMultipleScattering(benchmark::State& state) {
    const FullScatteringRequest request = Hemisphere(kCopper100, 13, 1, 0.0);
    for (auto _ : state)
        benchmark::DoNotOptimize(plain::SolveFullScattering(request, request.waves[0]).data());
    state.counters["atoms"] = static_cast<double>(request.positions.size());
}
BENCHMARK(MatrixOfFullMultipleScattering)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);

}  // namespace
