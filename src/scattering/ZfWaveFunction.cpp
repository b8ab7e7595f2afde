#include "scattering/ZfWaveFunction.h"

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

/// Distance of the sphere's nearest and farthest point from the source, as k rho.
struct Range {
    double nearest;
    double farthest;
};

Range RangeOf(const ZfFreeElectron& electron, double radius) {
    const double distance = std::sqrt(NormSquared(electron.position));
    return {electron.k * std::abs(distance - radius), electron.k * (distance + radius)};
}

/// The literal evaluation, wherever no kernel serves.
void AddPointByPoint(const ZfFreeElectron& electron, const ZfSampleDirections& directions, double radius,
                     double* re, double* im) {
    std::complex<double> value;
    for (std::size_t i = 0; i < directions.unit.count; ++i) {
        electron.ValueFromOrigin(value, radius * directions.unit.x[i], radius * directions.unit.y[i],
                                 radius * directions.unit.z[i]);
        re[i] += value.real();
        im[i] += value.imag();
    }
}

}  // namespace

void ZfWaveFunction::Sample(const ZfSampleDirections& directions, double radius, double* re,
                            double* im) const {
    std::complex<double> value;
    for (std::size_t i = 0; i < directions.unit.count; ++i) {
        Value(value, radius, directions.theta[i], directions.phi[i]);
        re[i] = value.real();
        im[i] = value.imag();
    }
}

ZfWaveVectorFreeElectron::ZfWaveVectorFreeElectron(const ZfVectorFreeElectron* electrons) : list(electrons) {
    if (!list) return;
    list->PrepareNorms();
    for (const ZfFreeElectron& electron : list->electrons) prepared_.push_back(Prepare(electron));
}

void ZfWaveVectorFreeElectron::Sample(const ZfSampleDirections& directions, double radius, double* re,
                                      double* im) const {
    if (List().Ek_eV < 0) throw "Kinetic Energy is not defined";
    std::fill(re, re + directions.unit.count, 0.0);
    std::fill(im, im + directions.unit.count, 0.0);
    for (std::size_t e = 0; e < prepared_.size(); ++e) {
        const ZfFreeElectron& electron = list->electrons[e];
        const KernelSource& source = prepared_[e];
        const Range range = RangeOf(electron, radius);
        if (!electron.IsPlaneWave && electron.A.L == 0 && electron.B.L == 0) continue;
        const bool phaseInRange = range.farthest <= kLargestKernelPhase;
        if (electron.IsPlaneWave && phaseInRange)
            AddPlaneWave(electron.A.At(0, 0), electron.planeWaveVector.Data(), electron.position.Data(),
                         directions.unit, radius, re, im);
        else if (source.L > 0 && phaseInRange && range.nearest >= SmallestKernelX(source.L))
            AddOutgoingWave(source, directions.unit, radius, re, im);
        else
            AddPointByPoint(electron, directions, radius, re, im);
    }
}
