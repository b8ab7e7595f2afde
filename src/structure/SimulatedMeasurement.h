#pragma once

#include <cstdint>
#include <string>

#include "structure/FitPlan.h"

namespace qvre {

/// Makes up the measurements of a plan from its own recipe: the patterns of the true values of its
/// parameters, as the sample of [fit.simulate] stands, with the noise of counts. Each becomes a table in the
/// folder, which takes the place of the data set's file in the plan; the starts of the parameters are shaken.
/// All depends on the seed. Returns the true values, in the units of the parameters. Throws ZfError.
FitPoint SimulateMeasurements(FitPlan& plan, std::uint64_t seed, const std::string& folder);

/// What the fit made of the true values, a line for each parameter.
std::string RecoveryText(const FitPlan& plan, const FitPoint& truth, const FitReport& report);

}  // namespace qvre
