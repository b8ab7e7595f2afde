#include "prepare/emission/PhotonEnergy.h"

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/atomic/CoreOrbital.h"

double ParsePhotonEnergy(const std::string& text) {
    if (text == "Al") return 1486.6;
    if (text == "Mg") return 1253.6;
    if (text == "Ag") return 2984.3;
    return StrictNumber(text, "photon energy: give eV, or Al, Mg or Ag");
}

double OrbitalBinding(const ScreenedAtom& atom, const CoreLevel& level) {
    const auto field = [&](double r) { return SlaterField(atom, r); };
    return -BoundOrbital(field, level.n, level.l).energy * kHartree_eV;
}

double MeasuredBinding(const BindingEnergies& table, const ScreenedAtom& atom, const CoreLevel& level) {
    if (const auto energy = table.Find(atom.symbol, level)) return *energy;
    throw ZfError(
        "The table has no binding energy of " + atom.symbol + " " + level.Name() +
        ": give the measured one, in a recipe as binding, on the command line with --binding (the calculated "
        "orbital lies at " +
        DoubleToText(std::round(OrbitalBinding(atom, level))) + " eV)");
}
