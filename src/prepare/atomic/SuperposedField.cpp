#include "prepare/atomic/SuperposedField.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

double SinhOver(double x) {
    return std::abs(x) < 1e-4 ? 1.0 + x * x / 6.0 : std::sinh(x) / x;
}

}  // namespace

SuperposedField::SuperposedField(const ScreeningTable& table, const std::string& element,
                                 const std::vector<AtomShell>& shells)
    : atom_(table.Find(element)) {
    for (const AtomShell& shell : shells) {
        if (!(shell.distance > 0.0)) throw ZfError("A neighbour needs a distance above 0");
        Add(table.Find(shell.element), shell);
    }
}

double SuperposedField::Potential(double r) const {
    double v = atom_.Potential(r);
    for (const Term& term : neighbours_) v -= term.potential * SinhOver(term.decay * r);
    return v;
}

double SuperposedField::Density(double r) const {
    double rho = atom_.Density(r);
    for (const Term& term : neighbours_)
        rho += term.potential * term.decay * term.decay / (4.0 * kPi) * SinhOver(term.decay * r);
    return std::max(rho, 0.0);
}

void SuperposedField::Add(const ScreenedAtom& atom, const AtomShell& shell) {
    for (std::size_t i = 0; i < atom.amplitude.size(); ++i) {
        const double decay = atom.decay[i];
        const double potential = shell.count * atom.atomicNumber * atom.amplitude[i] *
                                 std::exp(-decay * shell.distance) / shell.distance;
        const auto same = std::find_if(neighbours_.begin(), neighbours_.end(),
                                       [decay](const Term& term) { return term.decay == decay; });
        if (same == neighbours_.end())
            neighbours_.push_back({decay, potential});
        else
            same->potential += potential;
    }
}

}  // namespace qvre
