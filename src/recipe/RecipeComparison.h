#pragma once

#include <string>
#include <vector>

#include "recipe/RecipePlan.h"
#include "recipe/RunLog.h"

/// Compares every result of a recipe with the measured pattern and tells the reliability factors. A scan also
/// leaves its table, "scan.csv", and its plot, "scan.png", in the folder. Without a measured pattern nothing
/// is done. Throws ZfError.
void CompareResults(const RecipePlan& plan, const ResultFolder& folder, RunLog& log);
