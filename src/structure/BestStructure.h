#pragma once

#include "structure/FitPlan.h"
#include "structure/FitReport.h"
#include "structure/StructureObjective.h"

namespace qvre {

/// Completes a report with its best structure, how its patterns compare, and how R changes with larger
/// clusters and more phase shifts. What cannot be calculated is left out.
void DescribeBest(const FitPlan& plan, const StructureObjective& objective, FitReport& report);

}  // namespace qvre
