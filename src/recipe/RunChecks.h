#pragma once

#include <string>

#include "recipe/RunStages.h"

/// Checks whether the inputs of a calculation fit together and writes what it finds to a text file. Throws
/// ZfError for a misfit with which the run would fail or be wrong.
void CheckRun(const ScatteringRequest& inputs, const std::string& fluctuationFile,
              const std::string& atomicWeightFile, const std::string& reportFile);
