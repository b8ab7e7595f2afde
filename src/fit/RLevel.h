#pragma once

#include <optional>
#include <string>
#include <vector>

#include "fit/FitProblem.h"
#include "fit/LocalFit.h"

namespace qvre {

/// R up to which a structure is as good as the best one: R_min (1 + sqrt(2/N)), N being the number of
/// independent data (N. A. Booth et al., Surf. Sci. 387, 152 (1997)).
double RLevel(double leastR, double independentData);

/// The least misfit at one value of a parameter, the others optimised.
struct ProfilePoint {
    double value = 0.0;
    Trial trial;
};

/// The R level error of a parameter: the values around its best one where the R of its profile stays below
/// the level. Wells behind a wall do not belong to it; those are rivals.
struct RLevelError {
    std::optional<double> lower;  ///< end of the interval, not the distance to it
    std::optional<double> upper;
    std::string lowerReason;  ///< why there is none, such as the bound in the way
    std::string upperReason;
    std::vector<ProfilePoint> profile;  ///< by value; the best point is among them
    std::optional<Trial> better;  ///< where the profile came below the best misfit: the fit was not done
};

/// Follows the profile of a parameter to both sides of the minimum, by Gauss-Newton fits of the others, until
/// it crosses the level; the crossing is known to a percent of the distance. `firstStep` is a guess of the
/// distance, in the unit of the parameter; 0: the scale of the parameter.
RLevelError RLevelErrorAt(FitProblem& problem, const Trial& best, std::size_t parameter,
                          double independentData, double firstStep, const LocalFitSettings& settings = {});

/// The factor between both errors where R is a parabola: the R level error is so many noise errors, about
/// (2N)^(1/4).
double RLevelInNoiseErrors(double independentData, double degreesOfFreedom);

}  // namespace qvre
