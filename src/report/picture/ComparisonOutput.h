#pragma once

#include <string>

#include "report/compare/PatternComparison.h"

namespace qvre {

/// Throws ZfError unless the extension of the path is .csv, .png, .svg or .pdf.
void CheckDifferenceFile(const std::string& path);

/// Writes both modulations, b scaled where a positive scale serves, and a less b: as a table, .csv, or as a
/// picture, .png, .svg or .pdf (DrawComparison). Throws ZfError.
void WriteDifference(const CompareResult& result, const std::string& path);

}  // namespace qvre
