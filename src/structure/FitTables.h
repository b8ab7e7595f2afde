#pragma once

#include <string>

#include "structure/FitReport.h"

namespace qvre {

/// Comma-separated, a line a point of a profile: the parameter, its value, R, misfit, all parameters.
std::string ProfileTable(const FitReport& report);

/// Comma-separated, a line a direction (degrees): theta, phi, weight, chi measured, chi calculated with its
/// amplitude, the first less the second.
std::string ComparisonTable(const FittedData& data);

}  // namespace qvre
