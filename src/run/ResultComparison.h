#pragma once

#include "run/ResultFolder.h"
#include "run/RunLog.h"
#include "run/RunPlan.h"

namespace qvre {

/// Compares every result of a plan with the measured pattern and tells the reliability factors. The
/// differences that are asked for, and of a scan the table, "scan.csv", and the plot, "scan.png", go into the
/// folder. Without a measured pattern nothing is done. Throws ZfError.
void CompareResults(const RunPlan& plan, ResultFolder& folder, RunLog& log);

}  // namespace qvre
