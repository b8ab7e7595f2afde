#pragma once

#include <string>

#include "structure/FitReport.h"

namespace qvre {

/// The report as a JSON document for programs. What SciPy's optimisers tell as well has their names: x, fun
/// (the misfit), nfev, nit (generations), success, status (0 converged, 1 limit, 2 interrupted, 3 failed, -1
/// still running), message. A number that does not exist is null.
std::string FitAsJson(const FitReport& report);

}  // namespace qvre
