#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/sphere/PolarBackground.h"

namespace qvre {

/// What an image is written as, beside which settings of its run.
struct ExportRequest {
    std::string image;                          ///< .xml_img
    std::string i0;                             ///< its I0 image, of the same map and size; empty: none
    std::optional<BackgroundModel> background;  ///< instead of I0; unset: none
    std::string partner;  ///< B of the asymmetry (A - B)/(A + B), A being the image; empty: none
    std::vector<std::string> runFiles;  ///< files of the run that tell settings: see AddFileSettings
    bool hemisphere = false;            ///< of a cylindrical map the rows up to 90 degrees alone
    std::string output;                 ///< .csv, .npy, .h5, .hdf5 or .nxs
};

}  // namespace qvre
