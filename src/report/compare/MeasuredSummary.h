#pragma once

#include <string>

#include "report/compare/MeasuredPattern.h"

namespace qvre {

/// What was understood of a table, as indented lines to read: its form and columns, the rings or scans that
/// its directions make, gaps, the sector, and how well the data repeat after a turn or in a mirror.
std::string MeasuredSummary(const MeasuredTable& table, const ScanDirection& direction = {});

}  // namespace qvre
