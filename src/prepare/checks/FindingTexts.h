#pragma once

#include <cstddef>
#include <string>

#include "input/ZfCluster.h"

// Pieces of what findings say.

/// "structure 1: " where there is more than one.
std::string StructurePrefix(const ZfCluster& cluster, std::size_t index);

/// "(0, 0, 1.805)", angstrom.
std::string PositionText(const ZfAtom& atom);

/// Shortest text that reads back as the same number: energies are compared to the last bit.
std::string ExactText(double value);
