#pragma once

#include <string>
#include <vector>

#include "prepare/atomic/ScreenedAtom.h"

namespace qvre {

/// The neighbours of one element at one distance from an atom.
struct AtomShell {
    std::string element;
    double distance = 0.0;  ///< bohr
    double count = 0.0;
};

/// The spherical average, around an atom, of its own free-atom field and those of its neighbours
/// (L. F. Mattheiss, Phys. Rev. 133, A1399 (1964)). A Yukawa term exp(-a d)/d of a neighbour at distance D
/// averages to exp(-a D)/D sinh(a r)/(a r) over the sphere of radius r < D. Atomic units. Without neighbours
/// it is the free atom.
class SuperposedField {
public:
    /// Throws ZfError for an element without a field, or a distance that is not positive.
    SuperposedField(const ScreeningTable& table, const std::string& element,
                    const std::vector<AtomShell>& shells);

    double Potential(double r) const;  ///< hartree, electrostatic, of an electron; r below every distance
    double Density(double r) const;    ///< electrons/bohr^3; where the fits dip below 0 it is 0

private:
    struct Term {
        double decay = 0.0;      ///< 1/bohr
        double potential = 0.0;  ///< hartree, at the nucleus: the sum over the neighbours of Z A exp(-a D)/D
    };
    void Add(const ScreenedAtom& atom, const AtomShell& shell);

    ScreenedAtom atom_;
    std::vector<Term> neighbours_;
};

}  // namespace qvre
