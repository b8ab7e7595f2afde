#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "experiment/CountedIntensity.h"
#include "pattern/SphereMap.h"
#include "run/ScatteringRequest.h"

// The two stages of a calculation on the files of an input set. Both stop with ZfError when an interrupt asks
// them to, and write their outputs whole or not at all.

namespace qvre {

/// The files of a request, loaded. Throws ZfError.
struct LoadedInputs {
    explicit LoadedInputs(const ScatteringRequest& request);

    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
};

/// Returns what the user should know of it, in lines.
std::string CalculateScattering(const ScatteringRequest& request, const std::string& outputFile);

/// What leaves the sample of an input set whose waves are scattered.
struct EmergenceRequest {
    std::string scatteredWaveFile;
    std::string dipoleFile;    ///< of unit waves; none: the waves are emitted as they stand
    std::string emittersFile;  ///< the shares of the structures
    std::string fluctuationFile;
    std::string atomicWeightFile;
    std::string meanFreePathFile;  ///< of the inelastic mean free path; none: no losses
    Light light;                   ///< on unit waves
    double meanFreePath = 0.0;     ///< m; see CountingRequest
    SourceLimits limits;
};

struct ImageRequest {
    EmergenceRequest emergence;
    SphereMap map = SphereMap::kAzimuthalEquidistant;
    double resolution = 1.0;                         ///< degrees a pixel
    std::map<std::string, std::string> information;  ///< what the files tell of their making
};

/// The pattern and the image of the direct wave alone.
void CalculateImages(const ImageRequest& request, const std::string& imageFile,
                     const std::string& directImageFile);

/// A direction of emission inside the sample.
struct PolarDirection {
    double theta_deg = 0.0;
    double phi_deg = 0.0;
};

/// The same in some directions alone.
CountedIntensity CalculateDirections(const EmergenceRequest& request,
                                     const std::vector<PolarDirection>& directions);

}  // namespace qvre
