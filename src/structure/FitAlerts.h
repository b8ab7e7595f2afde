#pragma once

#include <string>
#include <vector>

#include "structure/FitReport.h"

namespace qvre {

/// What a reader of a fit must know before using its numbers, each a line with what to do about it.
std::vector<std::string> FitAlerts(const FitReport& report);

}  // namespace qvre
