#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

// Tables over (l, m) of the packs that the kernels of the translation take.

namespace qvre {

/// Pairs of a pack.
constexpr std::size_t kTranslationPack = 8;

/// Largest order of a target's table, and largest l size of a source's.
constexpr std::int32_t kLargestOrder = 288;
constexpr std::int32_t kLargestTranslatedL = 100;

/// Radial functions and tables of a target hold their order L times kOrderScale^L: so they stay in the range
/// of doubles. A power of 2, so that no digit is lost.
constexpr double kOrderScale = 0.125;

/// A complex number of each pair of a pack.
struct alignas(64) PackedComplex {
    double re[kTranslationPack]{};
    double im[kTranslationPack]{};

    void Set(std::size_t lane, std::complex<double> value) {
        re[lane] = value.real();
        im[lane] = value.imag();
    }
    std::complex<double> Get(std::size_t lane) const { return {re[lane], im[lane]}; }
};

/// A table over (l, m) of each pair, element (l, m) at l (l + 1) + m.
using PackedTable = std::vector<PackedComplex>;

/// The two combinations of the elements at m and -m that the parities of a quarter turn ask for: u_m + u_-m
/// and u_m - u_-m; u_0 at m = 0.
struct MirrorSums {
    PackedComplex plus;
    PackedComplex minus;
};

}  // namespace qvre
