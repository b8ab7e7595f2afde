#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What an image is written as, beside which settings of its run.
struct ExportRequest {
    std::string image;                  ///< .xml_img
    std::string i0;                     ///< its I0 image, of the same map and size; empty: none
    std::vector<std::string> runFiles;  ///< files of the run that tell settings: see AddFileSettings
    bool hemisphere = false;            ///< of a cylindrical map the rows up to 90 degrees alone
    std::string output;                 ///< .csv, .npy, .h5, .hdf5 or .nxs
};

struct ExportSummary {
    std::size_t columns = 0;
    std::size_t rows = 0;
    std::size_t pixels = 0;  ///< that lie on the map
};

/// Writes an image with the direction of each pixel, I, and if there is an I0 also I0 and chi = (I - I0)/I0.
/// The layouts are in docs/export-and-compare.md. Throws ZfError for an unknown extension, files that cannot
/// be read or written, images that do not fit together.
ExportSummary ExportImage(const ExportRequest& request);
