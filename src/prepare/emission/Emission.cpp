#include "prepare/emission/Emission.h"

#include <cmath>
#include <complex>
#include <cstddef>

#include "foundation/Constants.h"
#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "scattering/SphericalHarmonics.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

DipoleChannels Channels(const EmissionRequest& request, const CoreOrbital& orbital) {
    const int l0 = request.level.l;
    ContinuumRequest continuum;
    continuum.potential = request.potential;
    continuum.radius = request.radius;
    continuum.energy_eV = request.kinetic_eV;
    continuum.lSize = l0 + 2;
    continuum.equation = request.equation;
    const ContinuumWave wave = SolveContinuum(continuum);
    DipoleChannels channels;
    channels.l0 = l0;
    for (std::size_t i = l0 == 0 ? 1 : 0; i < 2; ++i) {
        const int l = i == 0 ? l0 - 1 : l0 + 1;
        channels.rho[i] = DipoleIntegral(orbital, wave, l);
        channels.delta[i] = wave.delta[static_cast<std::size_t>(l)];
    }
    return channels;
}

}  // namespace

void CheckLevel(const EmissionRequest& request) {
    if (IsOccupied(request.atom.atomicNumber, request.level.n, request.level.l)) return;
    throw ZfError("The element " + request.atom.symbol + " has no electrons in the level " +
                  request.level.Name());
}

void CheckSource(double kinetic_eV, double weight) {
    CheckEnergies({kinetic_eV}, 1);
    if (!(weight > 0.0) || !std::isfinite(weight)) throw ZfError("The weight has to be above 0");
}

Emission CoreLevelEmission(const EmissionRequest& request) {
    CheckSource(request.kinetic_eV, request.weight);
    CheckLevel(request);
    const auto field = [&](double r) { return SlaterField(request.atom, r); };
    Emission emission;
    emission.orbital = BoundOrbital(field, request.level.n, request.level.l);
    emission.source = {Channels(request, emission.orbital), request.kinetic_eV, request.weight};
    return emission;
}

std::vector<EmittedWave> IsotropicEmission(double kinetic_eV, double weight) {
    CheckSource(kinetic_eV, weight);
    std::vector<EmittedWave> waves(1);
    waves[0].Ek = kinetic_eV;
    waves[0].coeff.SetSize(1);
    waves[0].coeff.At(0, 0) = std::sqrt(4.0 * kPi * weight);
    return waves;
}

double KineticEnergyInside(double photon, double binding, double fermi) {
    const double energy = std::round(10.0 * (photon - binding + fermi)) / 10.0;
    if (energy > 0.0) return energy;  // false for what is no number, too
    throw ZfError("The photon energy of " + DoubleToText(photon) + " eV does not free an electron bound by " +
                  DoubleToText(binding) + " eV");
}

void SaveEmittedWaves(std::vector<EmittedWave> waves, const std::string& path) {
    ZfBarnXml xml("w");
    ExchangeEmittedWaves(xml, waves);
    WriteWholeFile(path, xml.Document());
}

}  // namespace qvre
