#pragma once

#include "run/RunPlan.h"

namespace qvre {

/// Carries out a plan: makes the inputs, calculates, draws and compares, and leaves everything in the result
/// folder. Steps that were done there with the same key are not repeated, unless `repeatsAll`. Tells on
/// standard output what it does. Throws ZfError, and Interruption when a signal stops it; the same plan then
/// goes on from the step where it was.
void CarryOut(const RunPlan& plan, bool repeatsAll);

}  // namespace qvre
