#include "scattering/ZfWaveFunction.h"

#include <algorithm>
#include <cmath>

using namespace qvre;

namespace {

KernelSource Prepare(const ZfFreeElectron& electron) {
    KernelSource source;
    if (electron.IsPlaneWave || electron.B.L > 0 || electron.A.L > kLargestKernelL) return source;
    source.L = electron.A.L;
    source.pairs = HarmonicPairs(electron.A);
    source.k = electron.k;
    for (std::size_t i = 0; i < 3; ++i) source.position[i] = electron.position.Data()[i];
    return source;
}

double FarthestX(const ZfFreeElectron& electron, double radius) {
    return electron.k * (std::sqrt(NormSquared(electron.position)) + radius);
}

/// On a sphere that comes too near for the kernel, the largest samples stay literal a little further out:
/// they make up the table, and the arc cosine of the literal form costs digits that stored results have lost
/// alike.
constexpr double kLiteralRange = 1.5;

/// Which points stand so near the source that the vector kernel does not serve.
void FindNearPoints(const ZfFreeElectron& electron, const KernelDirections& directions, double radius,
                    std::vector<std::size_t>& near) {
    near.clear();
    const double* const p = electron.position.Data();
    const double smallest = SmallestKernelX(electron.A.L) / electron.k;
    if (std::abs(std::sqrt(NormSquared(electron.position)) - radius) >= smallest) return;
    const double limit = kLiteralRange * smallest;
    const double squares = NormSquared(electron.position) + radius * radius - limit * limit;
    for (std::size_t i = 0; i < directions.count; ++i) {
        const double along = directions.x[i] * p[0] + directions.y[i] * p[1] + directions.z[i] * p[2];
        if (squares < 2.0 * radius * along) near.push_back(i);
    }
}

/// The literal evaluation, wherever no kernel serves.
void AddPointByPoint(const ZfFreeElectron& electron, const KernelDirections& directions, double radius,
                     double* re, double* im) {
    std::complex<double> value;
    for (std::size_t i = 0; i < directions.count; ++i) {
        electron.ValueFromOrigin(value, radius * directions.x[i], radius * directions.y[i],
                                 radius * directions.z[i]);
        re[i] += value.real();
        im[i] += value.imag();
    }
}

/// The vector kernel, and the literal evaluation at the points near the source.
void AddSource(const ZfFreeElectron& electron, const KernelSource& source, const KernelDirections& directions,
               double radius, double* re, double* im) {
    // Scratch of each thread: rows are sampled in parallel loops, which do not allocate.
    thread_local std::vector<std::size_t> near;
    thread_local std::vector<std::complex<double>> sums;
    FindNearPoints(electron, directions, radius, near);
    sums.clear();
    for (const std::size_t i : near) {
        std::complex<double> value;
        electron.ValueFromOrigin(value, radius * directions.x[i], radius * directions.y[i],
                                 radius * directions.z[i]);
        sums.push_back(std::complex<double>(re[i], im[i]) + value);
    }
    if (near.size() < directions.count) AddOutgoingWave(source, directions, radius, re, im);
    for (std::size_t n = 0; n < near.size(); ++n) {
        re[near[n]] = sums[n].real();
        im[near[n]] = sums[n].imag();
    }
}

}  // namespace

ZfWaveVectorFreeElectron::ZfWaveVectorFreeElectron(const ZfVectorFreeElectron* electrons) : list(electrons) {
    if (!list) return;
    list->PrepareNorms();
    for (const ZfFreeElectron& electron : list->electrons) prepared_.push_back(Prepare(electron));
}

void ZfWaveVectorFreeElectron::Sample(const KernelDirections& directions, double radius, double* re,
                                      double* im) const {
    if (List().Ek_eV < 0) throw "Kinetic Energy is not defined";
    std::fill(re, re + directions.count, 0.0);
    std::fill(im, im + directions.count, 0.0);
    for (std::size_t e = 0; e < prepared_.size(); ++e) {
        const ZfFreeElectron& electron = list->electrons[e];
        const KernelSource& source = prepared_[e];
        if (!electron.IsPlaneWave && electron.A.L == 0 && electron.B.L == 0) continue;
        const bool phaseInRange = FarthestX(electron, radius) <= kLargestKernelPhase;
        if (electron.IsPlaneWave && phaseInRange)
            AddPlaneWave(electron.A.At(0, 0), electron.planeWaveVector.Data(), electron.position.Data(),
                         directions, radius, re, im);
        else if (source.L > 0 && phaseInRange)
            AddSource(electron, source, directions, radius, re, im);
        else
            AddPointByPoint(electron, directions, radius, re, im);
    }
}
