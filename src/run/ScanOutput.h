#pragma once

#include <string>
#include <vector>

#include "report/compare/ReliabilityFactor.h"

namespace qvre {

/// How well the result for one value of a scanned setting agrees with the measurement.
struct ScannedAgreement {
    double value = 0.0;
    Agreement agreement;
};

/// Draws R and R scaled over the values of the setting.
void DrawScan(const std::string& setting, const std::vector<ScannedAgreement>& scan, const std::string& path);

/// "thermal.temperature = 300 has the least R; table scan.csv, plot scan.png"
std::string BestOfScan(const std::string& setting, const std::vector<ScannedAgreement>& scan);

}  // namespace qvre
