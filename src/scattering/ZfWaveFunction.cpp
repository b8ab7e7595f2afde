#include "scattering/ZfWaveFunction.h"

#include <algorithm>
#include <cmath>

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

/// Distances of the nearest and the farthest of some points from the source, as k rho.
struct Range {
    double nearest;
    double farthest;
};

Range RangeOf(const ZfFreeElectron& electron, const KernelDirections& directions, double radius) {
    const double* const p = electron.position.Data();
    double towards = -1e300;
    for (std::size_t i = 0; i < directions.count; ++i)
        towards = std::max(towards, directions.x[i] * p[0] + directions.y[i] * p[1] + directions.z[i] * p[2]);
    const double squared = NormSquared(electron.position);
    const double nearest = std::max(squared + radius * radius - 2.0 * radius * towards, 0.0);
    return {electron.k * std::sqrt(nearest), electron.k * (std::sqrt(squared) + radius)};
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
        const Range range = RangeOf(electron, directions, radius);
        if (!electron.IsPlaneWave && electron.A.L == 0 && electron.B.L == 0) continue;
        const bool phaseInRange = range.farthest <= kLargestKernelPhase;
        if (electron.IsPlaneWave && phaseInRange)
            AddPlaneWave(electron.A.At(0, 0), electron.planeWaveVector.Data(), electron.position.Data(),
                         directions, radius, re, im);
        else if (source.L > 0 && phaseInRange && range.nearest >= SmallestKernelX(source.L))
            AddOutgoingWave(source, directions, radius, re, im);
        else
            AddPointByPoint(electron, directions, radius, re, im);
    }
}
