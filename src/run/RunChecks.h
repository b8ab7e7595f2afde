#pragma once

#include <set>
#include <string>

#include "run/RunStages.h"

namespace qvre {

/// Checks whether the inputs of a calculation fit together, writes what it finds to a text file and returns
/// it. `displaced` are the elements whose displacement was given. Throws ZfError for a misfit with which the
/// run would fail or be wrong.
std::string CheckRun(const ScatteringRequest& inputs, const std::string& fluctuationFile,
                     const std::string& atomicWeightFile, const std::set<std::string>& displaced,
                     const std::string& reportFile);

}  // namespace qvre
