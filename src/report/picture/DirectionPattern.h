#pragma once

#include <string>
#include <vector>

#include "report/compare/PatternScans.h"
#include "report/picture/DrawnPattern.h"
#include "report/picture/LinePlot.h"

namespace qvre {

/// Values in single directions (degrees) as a pattern for pictures: each fills the cell of the sphere that
/// its direction stands for, by the distances of the rings and of the directions on them. Elsewhere it is
/// blank.
DrawnPattern PatternOfDirections(const std::vector<double>& theta, const std::vector<double>& phi,
                                 const std::vector<double>& values, const std::string& title);

/// Values by direction along a scan. The line ends where directions are missing.
Curve CurveOfScan(const PatternScan& scan, const std::vector<double>& values, const std::string& label);

}  // namespace qvre
