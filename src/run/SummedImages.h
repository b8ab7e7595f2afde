#pragma once

#include <string>
#include <vector>

namespace qvre {

/// Adds image files pixel by pixel into a new one, which takes the information of the first: intensities of
/// parts that do not interfere add. They have the same map. Throws ZfError when
/// they differ in size.
void SumImages(const std::vector<std::string>& imageFiles, const std::string& outputFile);

}  // namespace qvre
