#include <benchmark/benchmark.h>

#include <cmath>

#include "foundation/Console.h"
#include "pattern/ZfDocPatternNano.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

namespace {

constexpr double kEnergy_eV = 560.0;  // Cu 2p under Al K-alpha
constexpr double kHalfCell_m = 1.805e-10;
constexpr double kRadius_m = 1.276e-10;
constexpr std::int32_t kDegrees = 14;

/// Free radial solutions, with phase shifts like those of a medium atom.
PhaseShiftRecord PhaseShift(double k) {
    PhaseShiftRecord record;
    record.PhaseShiftValue.SetVectorSize(kDegrees);
    for (std::int32_t l = 0; l < kDegrees; ++l)
        record.PhaseShiftValue.VectorAt(l) = 150.0 * std::exp(-0.4 * l);
    record.CalculateScatteringFactors();
    record.radial.P.resize(kDegrees);
    record.radial.L.resize(kDegrees);
    ZfSphericalBessel bessel;
    for (int i = 0; i < 1000; ++i) {
        record.radial.LnX.push_back(std::log(kRadius_m) - 0.01 * (999 - i));
        const double x = k * std::exp(record.radial.LnX.back());
        bessel.Calculate(kDegrees, x);
        for (std::int32_t l = 0; l < kDegrees; ++l) {
            record.radial.P[static_cast<std::size_t>(l)].push_back(bessel.J(l) / std::pow(x, l));
            record.radial.L[static_cast<std::size_t>(l)].push_back(-x * bessel.J(l + 1) / std::pow(x, l));
        }
    }
    return record;
}

/// An fcc cluster below the emitter's layer and in it, every atom with a wave of its own.
ZfScatteringRecord Crystallite(int cells) {
    ZfScatteringRecord record;
    std::vector<ZfFreeElectron>& list = record.ListScatterer.electrons;
    list.emplace_back().A.SetSize(4);
    for (int x = -cells; x <= cells; ++x)
        for (int y = -cells; y <= cells; ++y)
            for (int z = 0; z <= 2; ++z) {
                if ((x + y + z) % 2 != 0 || (x == 0 && y == 0 && z == 0)) continue;
                ZfFreeElectron& atom = list.emplace_back();
                atom.position = Vector3(x * kHalfCell_m, y * kHalfCell_m, z * kHalfCell_m);
                atom.A.SetSize(kDegrees);
            }
    for (ZfFreeElectron& electron : list)
        for (std::size_t i = 0; i < electron.A.block.size(); ++i)
            electron.A.block[i] =
                std::polar(std::exp(-0.05 * static_cast<double>(i)), static_cast<double>(i));
    record.ListScatterer.SetEnergy_eV(kEnergy_eV);
    record.Ratio = 1.0;
    record.phaseShiftIndex.SetVectorSize(static_cast<std::int32_t>(list.size()));
    record.phaseShiftIndex.Clear();
    return record;
}

// The default image, 201 by 201 points of a vertical plane through the emitter.
void WaveOnAPlane(benchmark::State& state) {
    const ConsoleRedirection quiet(nullptr);
    ZfScatteringData data;
    data.ListScatteringData = {Crystallite(static_cast<int>(state.range(0)))};
    const ZfVectorFreeElectron& list = data.ListScatteringData[0].ListScatterer;
    ZfPhaseShiftDocument phaseShifts;
    phaseShifts.records = {PhaseShift(list.electrons[0].k)};
    ZfDocPatternNano nano;
    nano.pDocScatteringPaseShift_ = &phaseShifts;
    nano.sliceAxis = 2;
    nano.ActivateAll(1);
    ZfNotifyTerminateThreadCalculation notifier;
    for (auto _ : state) {
        nano.Calculate(notifier, data, {}, {});
        benchmark::DoNotOptimize(nano.mapping.planes[0].Data());
        nano.planeHeight += 1e-13;
    }
    state.counters["atoms"] = static_cast<double>(list.electrons.size());
    state.counters["points"] = benchmark::Counter(static_cast<double>(nano.mapping.planes[0].Count()),
                                                  benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(WaveOnAPlane)->Arg(1)->Arg(3)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
