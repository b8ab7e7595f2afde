#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/export/ExportRequest.h"

namespace qvre {

struct ExportSummary {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::size_t pixels = 0;           ///< that lie on the map
    std::vector<std::string> planes;  ///< their names
    std::string leftOut;              ///< LeftOutText
};

/// Writes an image with the direction of each pixel, I, and if there is an I0 also I0 and chi = (I - I0)/I0,
/// or the background B and chi = (I - B)/B, or a second image and the asymmetry of the two.
/// The layouts are in docs/export-and-compare.md. Throws ZfError for an unknown extension, files that cannot
/// be read or written, images that do not fit together.
ExportSummary ExportImage(const ExportRequest& request);

}  // namespace qvre
