#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace qvre {

/// Random numbers that are the same with every compiler and library, which those of the standard's
/// distributions are not. Their whole state is one number.
struct RandomNumbers {
    std::uint64_t state = 0;

    /// SplitMix64: G. L. Steele, D. Lea, C. H. Flood, OOPSLA 2014, p. 453.
    std::uint64_t Next() {
        state += 0x9e3779b97f4a7c15U;
        std::uint64_t bits = state;
        bits = (bits ^ (bits >> 30U)) * 0xbf58476d1ce4e5b9U;
        bits = (bits ^ (bits >> 27U)) * 0x94d049bb133111ebU;
        return bits ^ (bits >> 31U);
    }

    /// In (0, 1), neither end included.
    double Uniform() { return (static_cast<double>(Next() >> 12U) + 0.5) * 0x1p-52; }

    /// Of mean 0 and variance 1 (G. E. P. Box, M. E. Muller, Ann. Math. Stat. 29, 610 (1958)).
    double Normal() {
        const double radius = std::sqrt(-2.0 * std::log(Uniform()));
        return radius * std::cos(2.0 * std::numbers::pi * Uniform());
    }
};

}  // namespace qvre
