#pragma once

#include <complex>
#include <cstddef>
#include <vector>

// A phase shift that is too small for its l spoils every solution without a sign of it: S grows as
// (l / kd)^(2l), and where t_l does not fall as fast, the truncated series of orders has terms that mean
// nothing. The measure is
//
//     g(l, l') = sqrt(|t_l t_l'|) max over m of |S^m_ll'(kd)|
//
// at the distance d of the nearest pair: below 0.5 for phase shifts of atoms that touch, 20 to 1e8 for tables
// in which rounding, or a fixed number of decimals, stands for the true values at high l.

namespace qvre {

/// Largest |S^m_ll'(x)| over m, for l, l' < lSize; element l * lSize + l'. May be infinite.
std::vector<double> LargestCoaxial(double x, std::size_t lSize);

/// The l size that a list of t_l may keep at the distance x = kd. True values make g(l, l) fall at high l.
/// Where it exceeds 1 with a t_l of less than 0.02 (only small ones can be told from meaning something), the
/// list ends at the last l before g began to rise. All others are kept whole.
std::size_t SoundLSize(const std::vector<std::complex<double>>& t, double x);

/// The largest g of two species at the distance x, and where.
struct PairGrowth {
    double g = 0.0;  ///< infinity instead of not a number
    std::size_t l1 = 0;
    std::size_t l2 = 0;
};
PairGrowth LargestGrowth(const std::vector<std::complex<double>>& t1,
                         const std::vector<std::complex<double>>& t2, double x);

/// Above it no solution is to be believed.
constexpr double kLargestGrowth = 2.0;

}  // namespace qvre
