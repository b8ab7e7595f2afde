#pragma once

#include <string>

#include "structure/FitReport.h"

namespace qvre {

/// Writes the files of a report (FitFiles) to an existing folder, each whole or not at all. While the fit
/// runs, report.pdf and the pictures and tables of what comes at its end are left out: some tenths of a
/// second then. What is not known makes no file. Throws ZfError when a file cannot be written.
void WriteFitReport(const FitReport& report, const std::string& folder);

}  // namespace qvre
