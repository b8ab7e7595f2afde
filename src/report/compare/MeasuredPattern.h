#pragma once

#include <string>
#include <vector>

namespace qvre {

/// Measured points of a pattern; entry i of every list belongs to point i. A list that the file does not have
/// is empty.
struct MeasuredPattern {
    std::vector<double> theta;      ///< polar angle of emission from the surface normal, degrees, 0 to 90
    std::vector<double> phi;        ///< azimuth, degrees, any
    std::vector<double> intensity;  ///< any unit
    std::vector<double> chi;        ///< modulation (I - B)/B, where the file brings it
};

/// Reads a table of points from a text. Fields are separated by commas, semicolons, blanks or tabs; empty
/// lines and what follows a # do not count; all lines have the same number of fields. The first line may name
/// the columns, in any order and in either case: theta or polar, phi or azimuth, I, intensity or counts, chi;
/// other columns are skipped. Without names there are three columns, theta, phi, intensity. Throws ZfError
/// with the number of the line for anything else.
MeasuredPattern ParseMeasuredPattern(const std::string& text);

/// The same from a file; errors bring its name.
MeasuredPattern LoadMeasuredPattern(const std::string& path);

}  // namespace qvre
