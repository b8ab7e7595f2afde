#pragma once

#include "run/ResultFolder.h"
#include "run/RunLog.h"
#include "run/RunPlan.h"

namespace qvre {

/// Compares the curves of an energy scan with the measured ones and tells the reliability factors. A table
/// and a picture of both, "energy_comparison.csv" and ".png", go into the folder and, of a scan of a setting,
/// "scan.csv" and "scan.png". Without measured curves nothing is done. Throws ZfError.
void CompareEnergyResults(const RunPlan& plan, ResultFolder& folder, RunLog& log);

}  // namespace qvre
