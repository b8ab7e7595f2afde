#pragma once

#include <string>

#include "input/ZfDebye.h"

namespace qvre {

/// The table that ships as "AtomicWeight.txt". Throws ZfError.
ZfDebye LoadAtomicWeights(const std::string& path);

}  // namespace qvre
