#pragma once

#include <cstddef>
#include <string>

#include "structure/FitReport.h"

namespace qvre {

/// The report for people, as plain text of lines that end with a line feed. Both errors of a parameter stand
/// under their own names: the noise error and the interval within the R level.
std::string FitReportText(const FitReport& report);

/// What a program prints last: a line for each parameter and derived quantity, R, alerts, where the rest is.
std::string FitLastLines(const FitReport& report, const std::string& folder);

/// "d12 = 1.772 +- 0.008 angstrom"; without an error the value alone.
std::string ParameterText(const FitReport& report, std::size_t parameter);

/// "1.74 to 1.80", "above 1.74", "below 1.80" or "none"; "not known" where it was not looked for.
std::string LevelText(const FitReport& report, std::size_t parameter);

}  // namespace qvre
