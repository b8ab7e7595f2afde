#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/compare/MeasuredTable.h"

namespace qvre {

/// Measured points of a pattern; entry i of every list belongs to point i. A list that the file does not have
/// is empty.
struct MeasuredPattern {
    std::vector<double> theta;      ///< polar angle of emission from the surface normal, degrees, 0 to 90
    std::vector<double> phi;        ///< azimuth, degrees, any
    std::vector<double> intensity;  ///< any unit
    std::vector<double> chi;        ///< modulation (I - B)/B, where the file brings it
    std::vector<double> sigma;      ///< standard deviation of the measured value, 0 or more
    std::vector<double> energy;     ///< kinetic, eV
};

/// The direction of a scan, which its table need not have.
struct ScanDirection {
    std::optional<double> theta;  ///< degrees, "measured-theta"
    std::optional<double> phi;    ///< degrees, "measured-phi"
};

/// The points of a table. A negative polar angle is a positive one at the azimuth opposite; angles along the
/// slit are added, with the slit parallel to the axis of the polar rotation. Throws ZfError for an angle that
/// neither the table nor `direction` tells, or both.
MeasuredPattern PatternOf(const MeasuredTable& table, const ScanDirection& direction = {});

/// ReadMeasuredTable and PatternOf.
MeasuredPattern ParseMeasuredPattern(const std::string& text, const ScanDirection& direction = {});

/// The table of a file, whose extension may name the columns, and its points. Errors bring the file's name.
MeasuredTable LoadMeasuredTable(const std::string& path);
MeasuredPattern LoadMeasuredPattern(const std::string& path, const ScanDirection& direction = {});

}  // namespace qvre
