#include "fit/SobolPoints.h"

#include <boost/random/sobol.hpp>

#include "fit/RandomNumbers.h"

namespace qvre {

std::vector<std::vector<double>> SobolPoints(std::size_t dimension, std::size_t count, std::uint64_t seed) {
    boost::random::sobol sequence(dimension);
    RandomNumbers random{seed};
    std::vector<std::uint64_t> shift(dimension);
    for (std::uint64_t& digits : shift) digits = seed == 0 ? 0 : random.Next();
    std::vector<std::vector<double>> points(count, std::vector<double>(dimension));
    for (auto& point : points)
        for (std::size_t i = 0; i < dimension; ++i)
            point[i] = static_cast<double>((sequence() ^ shift[i]) >> 11U) * 0x1p-53;
    return points;
}

}  // namespace qvre
