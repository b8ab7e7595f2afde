#include <benchmark/benchmark.h>

#include "foundation/Console.h"
#include "pattern/ZfBlurForSPattern.h"
#include "pattern/ZfDocScatteringPatternMatrix.h"

using namespace qvre;

namespace {

constexpr double kEnergy_eV = 560.0;

PhaseShiftRecord PhaseShift(std::int32_t lSize) {
    PhaseShiftRecord record;
    record.Ek_eV = kEnergy_eV;
    record.AtomName = record.AtomElement = "Cu";
    record.PhaseShiftValue.SetVectorSize(lSize);
    for (std::int32_t l = 0; l < lSize; ++l) record.PhaseShiftValue.VectorAt(l) = 80.0 / (1 + l * l);
    record.CalculateScatteringFactors();
    return record;
}

EmittedWave PWave() {
    EmittedWave wave;
    wave.Ek = kEnergy_eV;
    wave.coeff.SetSize(2);
    wave.coeff.At(1, 0) = 1.0;
    return wave;
}

// The tables of a pair from 2.5 to 12.3 angstrom, every 2 degrees at the equator.
void PairTable(benchmark::State& state) {
    const ConsoleRedirection quiet(nullptr);
    ZfScatteringData data;
    const ZfPhaseShiftDocument phaseShifts = {{PhaseShift(static_cast<std::int32_t>(state.range(0)))}};
    const std::vector<EmittedWave> waves = {PWave()};
    const Fluctuation fluctuation;
    const ZfDebye debye;
    ZfDocScatteringPatternMatrix matrix;
    matrix.PDocScattering_ = &data;
    matrix.PDocScatteringPhaseShift_ = &phaseShifts;
    matrix.PDocFinalState_ = &waves;
    matrix.PDocFluctuation_ = &fluctuation;
    matrix.PDebye_ = &debye;
    matrix.phaseShiftSelection = {true};
    matrix.distanceStart = 2.5e-10;
    matrix.distanceStep = 0.2e-10;
    matrix.distanceCount = 50;
    matrix.angleCount = 59;
    for (auto _ : state) {
        matrix.CalcPattern();
        benchmark::DoNotOptimize(matrix.totalTable.Data());
    }
    state.counters["distances"] =
        benchmark::Counter(matrix.distanceCount, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(PairTable)->ArgName("l_size")->Arg(10)->Arg(20)->UseRealTime()->Unit(benchmark::kMillisecond);

// The two sums over the sphere, on a table of 50 lines.
template <void (ZfBlurForSPattern::*version)(ZfFloatMatrix&, const ZfFloatMatrix&, double)>
void Blur(benchmark::State& state) {
    ZfFloatMatrix in(50, static_cast<std::int32_t>(state.range(0)));
    for (std::int64_t i = 0; i < in.Count(); ++i) in.Data()[i] = static_cast<float>(i % 7);
    ZfFloatMatrix out;
    ZfBlurForSPattern blur;
    for (auto _ : state) {
        (blur.*version)(out, in, 3.0);
        benchmark::DoNotOptimize(out.Data());
    }
    state.counters["rows"] = benchmark::Counter(in.RowSize, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(Blur<&ZfBlurForSPattern::Ver5>)->ArgName("rows")->Arg(59)->Arg(181)->Unit(benchmark::kMillisecond);
BENCHMARK(Blur<&ZfBlurForSPattern::Ver6>)->ArgName("rows")->Arg(59)->Arg(181)->Unit(benchmark::kMillisecond);

}  // namespace
