#pragma once

#include <cstddef>
#include <string>

#include "input/Cluster.h"

// Pieces of what findings say.

namespace qvre {

/// "structure 1: " where there is more than one.
std::string StructurePrefix(const Cluster& cluster, std::size_t index);

/// "(0, 0, 1.805)", angstrom.
std::string PositionText(const ClusterAtom& atom);

/// Shortest text that reads back as the same number: energies are compared to the last bit.
std::string ExactText(double value);

}  // namespace qvre
