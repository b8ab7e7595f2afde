#pragma once

#include <vector>

namespace qvre {

/// Largest degree l of the multipoles: structure finer than 180/20 = 9 degrees does not count.
constexpr int kMultipoles = 20;

/// Reliability factor of the multipole coefficients of two modulation functions in the same directions,
/// degrees (R. Fasel, P. Aebi, J. Osterwalder, L. Schlapbach, R. G. Agostino, G. Chiarello, Phys. Rev. B 50,
/// 14516 (1994)):
///     R_MP = sum |a_lm - b_lm|^2 / sum (|a_lm|^2 + |b_lm|^2),   l = 0 .. kMultipoles,
///     a_lm = sum over the directions of Omega chi_a conj(Y_lm),
/// with the solid angle Omega of the ring of a direction over the number of its points. Noise and structure
/// that the analyser does not resolve hardly count. 0 for equal functions, 1 for unrelated ones. NaN when
/// both have no multipoles.
double MultipoleFactor(const std::vector<double>& theta, const std::vector<double>& phi,
                       const std::vector<double>& chiA, const std::vector<double>& chiB);

}  // namespace qvre
