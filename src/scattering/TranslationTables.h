#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Constants of the translation of waves, built when first asked for, from any thread, and kept.

namespace qvre {

/// Rows of a quarter turn that stand side by side.
constexpr std::size_t kTurnTile = 4;

/// The Wigner matrix D_mum = d^l_mum(pi/2) for mu, m >= 0; the others follow from
///     D_-mu,m = (-1)^(l+m) D_mu,m,   D_mu,-m = (-1)^(l+mu) D_mu,m,   D_m,mu = (-1)^(mu-m) D_mu,m.
/// The rows mu of the parity of l come first, then the others, each kind in tiles of kTurnTile rows filled up
/// with zeros. A tile holds, for the even m first and then for the odd ones, the elements of its rows.
const double* QuarterTurn(std::int32_t l);

/// What the coaxial coefficients S^m_Ll take from m, with a_L = sqrt(((L+1)^2 - m^2) / ((2L+1) (2L+3))):
///     S_L,l+1 = (a_(l-1) S_L,l-1 - a_L S_(L+1),l + a_(L-1) S_(L-1),l) / a_l.
/// Index 0 stands for L = m. `above` and `below` carry the scale of the orders.
struct CoaxialTable {
    std::vector<double> a;      ///< a_L
    std::vector<double> above;  ///< a_L / kOrderScale
    std::vector<double> below;  ///< a_(L-1) kOrderScale
    std::vector<double> first;  ///< S_Lm / (f_L(kR) (kR)^-m)
};
const CoaxialTable& CoaxialTableOf(std::int32_t m);

}  // namespace qvre
