#pragma once

#include <vector>

#include "foundation/Words.h"
#include "prepare/atomic/SuperposedField.h"

namespace qvre {

/// The local exchange potential of a continuum electron.
enum class ExchangeKind {
    kFurnessMcCarthy,  ///< J. B. Furness, I. E. McCarthy, J. Phys. B 6, 2280 (1973): falls with the energy
    kSlater,           ///< J. C. Slater, Phys. Rev. 81, 385 (1951): of full strength at every energy
    kNone,
};

template <>
inline constexpr auto kWords<ExchangeKind> =
    std::to_array<Word<ExchangeKind>>({{"furness", ExchangeKind::kFurnessMcCarthy},
                                       {"slater", ExchangeKind::kSlater},
                                       {"none", ExchangeKind::kNone}});

/// Hartree. `kinetic` is E - V, the local kinetic energy without exchange (hartree), `density` that of the
/// electrons (1/bohr^3). Furness and McCarthy: (E - V)/2 - sqrt((E - V)^2 + 4 pi rho)/2.
/// Slater: -3/2 (3 rho/pi)^(1/3).
double ExchangePotential(ExchangeKind kind, double kinetic, double density);

/// A species of a crystal: its field, the sphere in which it scatters and its cell.
struct MuffinTinSite {
    SuperposedField field;
    double radius = 0.0;      ///< bohr: the muffin-tin sphere
    double cellRadius = 0.0;  ///< bohr: the Wigner-Seitz sphere, of the volume of the atom's cell
    double weight = 1.0;      ///< atoms of the species for each atom of the others
};

/// The muffin-tin zero in hartree, on the scale of the superposed fields: the average over the shells between
/// muffin-tin and Wigner-Seitz spheres of field and exchange (T. L. Loucks, Augmented Plane Wave Method
/// (Benjamin, 1967)). The exchange belongs to the total energy, kinetic energy (hartree) plus muffin-tin
/// zero, so the zero is iterated. Throws ZfError without a site, or with a cell that is not larger than its
/// sphere.
double MuffinTinZero(const std::vector<MuffinTinSite>& sites, ExchangeKind exchange, double kinetic);

/// What the electron feels inside one sphere. A free atom is the field without neighbours and the zero 0.
struct MuffinTinPotential {
    /// Hartree, measured from the muffin-tin zero, exchange included; r in bohr.
    double operator()(double r) const;

    const SuperposedField* field = nullptr;  ///< not owned
    ExchangeKind exchange = ExchangeKind::kFurnessMcCarthy;
    double kinetic = 0.0;  ///< hartree: the energy above the muffin-tin zero
    double zero = 0.0;     ///< hartree: the muffin-tin zero
};

}  // namespace qvre
