#pragma once

#include <string>

#include "run/RunStages.h"

namespace qvre {

/// Checks whether the inputs of a calculation fit together, writes what it finds to a text file and returns
/// it. Throws ZfError for a misfit with which the run would fail or be wrong.
std::string CheckRun(const ScatteringRequest& inputs, const std::string& fluctuationFile,
                     const std::string& atomicWeightFile, const std::string& reportFile);

}  // namespace qvre
