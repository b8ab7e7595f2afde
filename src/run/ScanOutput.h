#pragma once

#include <string>
#include <vector>

#include "report/compare/LeastR.h"
#include "report/compare/ReliabilityFactor.h"
#include "run/RunPlan.h"

namespace qvre {

/// How well the result for one point of a scan agrees with the measurement.
struct ScannedAgreement {
    std::vector<double> values;  ///< of the scanned settings
    Agreement agreement;
    std::string member = {};  ///< of a series that is kept apart: each has a least R of its own
};

/// A scan with its settings and the number of independent data that it was compared with.
struct ComparedScan {
    std::vector<ScannedSetting> settings;
    std::vector<ScannedAgreement> points;
    double independentData = 0.0;
};

/// Numbers, each with a comma behind it.
std::string ScanFields(const std::vector<double>& values);

/// The names of the settings and their values at a point, each with a comma behind it, and the member if
/// there is one.
std::string ScanColumns(const ComparedScan& scan);
std::string PointFields(const ScannedAgreement& point);

/// Draws R and R scaled over the values of the setting, with the parabola of the least R; of two settings a
/// map of R with the least R and the ellipse of the R level. Of several members R alone, and the map of the
/// best one.
void DrawScan(const ComparedScan& scan, const std::string& path);

/// "a = 4.09 +- 0.03 angstrom has the least R; table scan.csv, plot scan.png", and what the error is; of each
/// member.
std::string BestOfScan(const ComparedScan& scan);

}  // namespace qvre
