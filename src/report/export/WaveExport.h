#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvre {

struct WaveSummary {
    std::size_t records = 0;
    std::size_t sources = 0;  ///< of all records
    int largestL = 0;
};

/// Writes a scattered wave (.xml_sf) as HDF5 (.h5, .hdf5 or .nxs), with settings told by `runFiles` as in
/// ExportRequest. The layout is in docs/export-and-compare.md. Throws ZfError.
WaveSummary ExportScatteredWave(const std::string& wavePath, const std::vector<std::string>& runFiles,
                                const std::string& output);

}  // namespace qvre
