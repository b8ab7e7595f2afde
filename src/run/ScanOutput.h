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
};

/// A scan with its settings and the number of independent data that it was compared with.
struct ComparedScan {
    LeastR Least() const;

    std::vector<ScannedSetting> settings;
    std::vector<ScannedAgreement> points;
    double independentData = 0.0;
};

/// The names of the settings, each with a comma behind it, and their values.
std::string ScanColumns(const std::vector<ScannedSetting>& settings);
std::string ScanFields(const std::vector<double>& values);

/// Draws R and R scaled over the values of the setting, with the parabola of the least R; of two settings a
/// map of R with the least R and the ellipse of the R level.
void DrawScan(const ComparedScan& scan, const std::string& path);

/// "a = 4.09 +- 0.03 angstrom has the least R, 0.1234; table scan.csv, plot scan.png", and what the error is.
std::string BestOfScan(const ComparedScan& scan);

}  // namespace qvre
