#pragma once

#include <cstdint>
#include <string>

// The two stages of a run, on the data of the one document.

/// Computes the scattered wave of every atom by the method and saves it; an empty name saves nothing. Throws
/// ZfError.
void ZfRunScattering(const std::string& outputFile, std::int32_t method);

namespace qvre {

/// What the image stage is asked for. Lengths are metres.
struct PatternRequest {
    double angularResolution = 1.0;  ///< degrees a pixel
    double clusterLimit = 0.0;
    double clusterLowerLimit = 0.0;
    std::string imageFile;
    bool i0Wanted = false;
    std::string i0File;
    std::int32_t mappingCode = 0;  ///< 0 azimuthal equidistant, 1 equidistant cylindrical
    double meanFreePath = 0.0;
    bool byEmitterDistance = false;
    bool byDepth = false;
};

}  // namespace qvre

/// Turns the scattered wave into the pattern image and, on demand, the image of the direct wave alone. Throws
/// ZfError.
void ZfRunPattern(const qvre::PatternRequest& request);
