#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace qvre {

/// Points that fill the unit cube more evenly than random ones: the sequence of Sobol with the directions of
/// S. Joe and F. Y. Kuo (SIAM J. Sci. Comput. 30, 2635 (2008)), shifted digit by digit by the seed (seed 0:
/// not), so that seeds give independent sets. What a search has to beat.
std::vector<std::vector<double>> SobolPoints(std::size_t dimension, std::size_t count, std::uint64_t seed);

}  // namespace qvre
