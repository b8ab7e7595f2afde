#pragma once

#include <string>

#include "multiple/FullRecords.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// The files whose waves are scattered, and how.
struct ScatteringRequest {
    std::string clusterFile;
    std::string wavesFile;
    std::string phaseShiftFile;
    ScatteringMethod method = kMulti;
    // Of the method FULL alone; the others leave vibrations and losses to the image.
    FullScatteringSettings full;
    std::string meanFreePathFile;  ///< none: that of the settings
    std::string fluctuationFile;   ///< none: the atoms are at rest
    std::string atomicWeightFile;
};

}  // namespace qvre
