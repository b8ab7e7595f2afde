#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "structure/FitPlan.h"

namespace qvre {

struct Simulation {
    FitPoint truth;                            ///< in the units of the parameters
    std::map<std::string, std::string> files;  ///< texts of tables by their paths, yet to be written
};

/// Makes up the measurements of a plan from its own recipe: the patterns of the true values of its
/// parameters, as the sample of [fit.simulate] stands, with the noise of counts. Each becomes a table for the
/// folder, which takes the place of the data set's file in the plan; the starts of the parameters are shaken.
/// All depends on the seed. Throws ZfError.
Simulation SimulateMeasurements(FitPlan& plan, std::uint64_t seed, const std::string& folder);

/// What the fit made of the true values, a line for each parameter.
std::string RecoveryText(const FitPlan& plan, const FitPoint& truth, const FitReport& report);

}  // namespace qvre
