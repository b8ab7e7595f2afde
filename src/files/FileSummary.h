#pragma once

#include <string>

#include "files/AnyFile.h"

namespace qvre {

/// What a file holds, as lines to read: the path and the kind first, indented lines with numbers and units
/// behind it.
std::string FileSummary(const AnyFile& file);

// For the kinds that a run makes.
std::string ScatteredWaveSummary(const ZfScatteringData& data);
std::string ImageSummary(const ZfDocData& document, std::int32_t version);

/// "2 atoms", "1 atom".
std::string Counted(std::size_t count, const std::string& noun);

/// "1 to 2", or "1" where both are the same.
std::string RangeText(double smallest, double largest);

/// Lists are cut at this length, with a line that tells how many are left out.
constexpr std::size_t kLongestList = 40;

}  // namespace qvre
