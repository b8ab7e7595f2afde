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

constexpr double kFreeAtomRadius = 40.0;  // bohr; at 80 bohr beta is the same to 2e-4
constexpr double kFineStructure = 7.2973525693e-3;
constexpr double kMbPerBohr2 = kBohr_angstrom * kBohr_angstrom * 100.0;

ContinuumWave Continuum(const EmissionRequest& request) {
    ContinuumRequest continuum;
    continuum.potential = request.potential;
    continuum.radius = request.radius;
    continuum.energy_eV = request.kinetic_eV;
    continuum.lSize = request.level.l + 2;
    continuum.equation = request.equation;
    return SolveContinuum(continuum);
}

DipoleChannels Channels(const CoreOrbital& orbital, const ContinuumWave& wave) {
    const int l0 = orbital.l;
    DipoleChannels channels;
    channels.l0 = l0;
    for (std::size_t i = l0 == 0 ? 1 : 0; i < 2; ++i) {
        const int l = i == 0 ? l0 - 1 : l0 + 1;
        channels.rho[i] = DipoleIntegral(orbital, wave, l);
        channels.delta[i] = wave.delta[static_cast<std::size_t>(l)];
    }
    return channels;
}

/// Of the level in the ground state; a line of a pair has its part of them.
double Electrons(int atomicNumber, const CoreLevel& level) {
    double electrons = 0.0;
    for (const AtomicShell& shell : GroundState(atomicNumber))
        if (shell.n == level.n && shell.l == level.l) electrons = shell.electrons;
    return level.twiceJ == 0 ? electrons : electrons * (level.twiceJ + 1) / (2.0 * (2.0 * level.l + 1.0));
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
    Emission emission;
    emission.orbital = BoundOrbital(CoreState(request.atom, request.core, request.level.n, request.level.l));
    emission.source = {Channels(emission.orbital, Continuum(request)), request.kinetic_eV, request.weight};
    return emission;
}

void SetFreeAtomField(EmissionRequest& request) {
    const BoundState core = CoreState(request.atom, request.core, request.level.n, request.level.l);
    request.potential = core.field;
    request.equation = core.equation;
    request.radius = kFreeAtomRadius;
}

double CrossSection_Mb(const ScreenedAtom& atom, CoreField core, const CoreLevel& level, double photon_eV) {
    EmissionRequest request;
    request.atom = atom;
    request.level = level;
    request.core = core;
    CheckLevel(request);
    SetFreeAtomField(request);
    const CoreOrbital orbital = BoundOrbital({request.potential, level.n, level.l, request.equation});
    request.kinetic_eV = photon_eV + orbital.energy * kHartree_eV;
    if (!(request.kinetic_eV > 0.0)) return 0.0;
    const ContinuumWave wave = Continuum(request);
    const DipoleChannels channels = Channels(orbital, wave);
    const auto [lower, upper] = channels.rho;
    const double strength = (level.l * lower * lower + (level.l + 1) * upper * upper) / (2 * level.l + 1);
    return 4.0 * kPi * kPi / 3.0 * kFineStructure * kMbPerBohr2 * photon_eV / kHartree_eV *
           Electrons(atom.atomicNumber, level) * 2.0 * wave.k / kPi * strength;
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
