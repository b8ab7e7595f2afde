#pragma once

#include <cstddef>
#include <vector>

#include "input/Cluster.h"

namespace qvre {

struct Neighbour {
    std::size_t atom = 0;            ///< index in the list
    double distance_angstrom = 0.0;  ///< infinite for an atom that stands alone
};

/// The nearest other atom of each, the first of equals.
std::vector<Neighbour> NearestNeighbours(const std::vector<ClusterAtom>& atoms);

/// The atom that becomes the emitter: the first of those nearest to the origin. The list must not be empty.
std::size_t NearestToOrigin(const std::vector<ClusterAtom>& atoms);

}  // namespace qvre
