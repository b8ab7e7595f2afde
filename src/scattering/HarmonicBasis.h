#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "input/LmTable.h"

// The form in which the vector kernels sum spherical harmonics over many directions at once. With the unit
// vector (x, y, z) of a direction and (x + i y)^m = u_m + i v_m,
//
//     sum over m of A(l,m) Y(l,m) = sum over m >= 0 of p_lm(z) (C_lm u_m + D_lm v_m),
//
// where p_lm is the monic multiple of d^m P_l / dz^m, so that
//
//     p_mm = 1,  p_lm = z p_(l-1)m - gamma_lm p_(l-2)m,  gamma_lm = ((l-1)^2 - m^2) / (4 (l-1)^2 - 1),
//
// and every norm and sign stands in C and D. No angle is needed, no direction is special, and half of the
// products are saved against a sum over all m (W. H. Press et al., Numerical Recipes, 3rd ed., section 6.7,
// for the norms).

namespace qvre {

/// Largest table that the kernels take; beyond it the range of p_lm and of the Hankel functions would need
/// care.
constexpr std::int32_t kLargestKernelL = 100;

/// gamma_lm for l = 0 .. n-1 and m = 0 .. l, in the order (0,0) (1,0) (1,1) (2,0) ...; 0 where no p_(l-2)m
/// exists.
const double* HarmonicGammas();

/// Place of (l, m) in that order.
inline std::size_t HarmonicIndex(std::int32_t l, std::int32_t m) {
    return static_cast<std::size_t>(l) * (static_cast<std::size_t>(l) + 1) / 2 + static_cast<std::size_t>(m);
}

/// C and D of one (l, m).
struct HarmonicPair {
    std::complex<double> c;
    std::complex<double> d;
};

/// The coefficients of a table in the order of HarmonicGammas. The table must not be larger than
/// kLargestKernelL.
std::vector<HarmonicPair> HarmonicPairs(const ZfLmComplexTable& table);

}  // namespace qvre
