#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "files/RunSettings.h"
#include "report/export/ExportRequest.h"
#include "report/sphere/SphereImage.h"

namespace qvre {

/// A quantity that an export writes: one value a pixel, row by row with the column fastest, NaN outside the
/// map and where there is none.
struct ImagePlane {
    std::string name;
    std::string unit;
    std::vector<double> values;
};

/// An image as the writers of every format take it.
struct ImageTable {
    SphereMap map = SphereMap::kAzimuthalEquidistant;
    std::size_t columns = 0;
    std::size_t rows = 0;
    double resolution = 0.0;         ///< degrees
    std::vector<double> theta;       ///< degrees, as a plane
    std::vector<double> phi;         ///< degrees, 0 to 360, as a plane
    std::vector<ImagePlane> planes;  ///< I; or I, I0 and chi; or I, B and chi; or A, B and the asymmetry
    std::string leftOut;             ///< LeftOutText of chi
    RunSettings settings;            ///< the program, the files, the map, and what is known of the run

    bool OnMap(std::size_t pixel) const { return theta[pixel] == theta[pixel]; }
};

/// Throws ZfError for files that cannot be read and images that do not fit together.
ImageTable MakeImageTable(const ExportRequest& request);

}  // namespace qvre
