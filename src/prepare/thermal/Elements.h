#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "input/Cluster.h"

namespace qvre {

/// Symbols in the order of first appearance.
std::vector<std::string> ElementsOf(const Cluster& cluster);

/// Atomic number of a symbol. Throws ZfError, and says so, for one that is none.
std::int32_t AtomicNumberOf(const std::string& element);

}  // namespace qvre
