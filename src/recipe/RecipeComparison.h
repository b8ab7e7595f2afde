#pragma once

#include <string>
#include <vector>

#include "recipe/RecipePlan.h"
#include "run/RunLog.h"

/// Compares every result of a recipe with the measured pattern and tells the reliability factors. The
/// differences that the recipe asks for, and of a scan the table, "scan.csv", and the plot, "scan.png", go
/// into the folder. Without a measured pattern nothing is done. Throws ZfError.
void CompareResults(const RecipePlan& plan, const ResultFolder& folder, RunLog& log);
