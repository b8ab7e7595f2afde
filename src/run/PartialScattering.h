#pragma once

#include <string>

#include "foundation/ReplacedFile.h"
#include "run/ScatteringRequest.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// The structures that a stopped calculation had done, in a hidden file beside its output; the same
/// calculation goes on behind them.
class PartialScattering {
public:
    /// Of the calculation that makes `output` of the files and settings of the request.
    PartialScattering(const ScatteringRequest& request, const std::string& output);

    /// Loads the records of the structures that are done into `data`, which stays without any. A file that
    /// cannot be read counts as none.
    void Load(ZfScatteringData& data) const;
    /// Keeps the records of `data`, whole or not at all.
    void Save(ZfScatteringData& data) const;
    /// Removes what any stopped calculation of the output left.
    void Remove() const;

private:
    std::string start_;  // of the names of all such files
    std::string path_;
};

/// Writes a scattered-wave file. Throws ZfError.
void WriteScatteredWaves(ZfScatteringData& data, ReplacedFile& output);

}  // namespace qvre
