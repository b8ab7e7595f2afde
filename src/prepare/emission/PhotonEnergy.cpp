#include "prepare/emission/PhotonEnergy.h"

#include <fmt/format.h>

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/atomic/FreeAtom.h"

namespace qvre {

namespace {

constexpr double kLargestFermi_eV = 1000.0;

void CheckAboveZero(double energy, const char* what) {
    if (!(energy > 0.0 && energy <= kHighestEnergy_eV))
        throw ZfError(fmt::format("The {} has to lie above 0 and up to {:g} eV", what, kHighestEnergy_eV));
}

}  // namespace

void CheckEnergy(const PhotoelectronEnergy& energy) {
    if ((energy.kinetic_eV == 0.0) == (energy.photon_eV == 0.0))
        throw ZfError("Either the kinetic energy or the photon energy has to be given");
    if (energy.photon_eV == 0.0)
        CheckAboveZero(energy.kinetic_eV, "kinetic energy");
    else
        CheckAboveZero(energy.photon_eV, "photon energy");
    if (energy.binding_eV) CheckAboveZero(*energy.binding_eV, "binding energy");
    if (!(energy.fermi_eV >= 0.0 && energy.fermi_eV <= kLargestFermi_eV))
        throw ZfError(fmt::format("The Fermi energy has to lie between 0 and {:g} eV", kLargestFermi_eV));
}

double ParsePhotonEnergy(const std::string& text) {
    if (text == "Al") return 1486.6;
    if (text == "Mg") return 1253.6;
    if (text == "Ag") return 2984.3;
    return StrictNumber(text, "photon energy: give eV, or Al, Mg or Ag");
}

double OrbitalBinding(const ScreenedAtom& atom, CoreField core, const CoreLevel& level) {
    return -BoundOrbital(CoreState(atom, core, level.n, level.l)).energy * kHartree_eV;
}

double MeasuredBinding(const BindingEnergies& table, const ScreenedAtom& atom, const CoreLevel& level) {
    if (const auto energy = table.Find(atom.symbol, level)) return *energy;
    throw ZfError("The table has no binding energy of " + atom.symbol + " " + level.Name() +
                  ": give the measured one as binding (the calculated orbital lies at " +
                  DoubleToText(std::round(OrbitalBinding(atom, CoreField::kSelfConsistent, level))) + " eV)");
}

}  // namespace qvre
