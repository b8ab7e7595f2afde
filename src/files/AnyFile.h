#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "image/ZfDocData.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// Any file of the project, loaded. Its kind is the alternative that the content holds.
struct AnyFile {
    using Content = std::variant<Cluster, std::vector<EmittedWave>, ZfPhaseShiftDocument, Fluctuation,
                                 std::unique_ptr<ZfScatteringData>, std::unique_ptr<ZfDocData>>;

    std::string path;
    Content content;
    std::int32_t imageVersion = 0;  ///< stored version, of an image file only
};

/// Recognises a file by its root element, Extended XYZ by its extension, and loads it. Throws ZfError, which
/// names the file, for one that cannot be read, is of another kind, or is cut short.
AnyFile LoadAnyFile(const std::string& path);

// The same for one kind, which the file has to be of.
Cluster LoadClusterFile(const std::string& path);
std::vector<EmittedWave> LoadWaveFile(const std::string& path);

}  // namespace qvre
