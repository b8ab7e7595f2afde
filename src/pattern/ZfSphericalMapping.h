#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Matrices.h"

/// An image over directions of the sphere. All matrices are W by H, addressed (x, y) with x from 0 to W-1.
struct ZfSphericalMapping {
    std::string name;  ///< of the projection
    std::vector<ZfLDoubleMatrix> planes;
    ZfLDoubleMatrix directionX;  ///< unit direction of the pixel
    ZfLDoubleMatrix directionY;
    ZfLDoubleMatrix directionZ;
    ZfLDoubleMatrix pixelWeight;  ///< solid angle up to the pixel's size; exactly 0 outside the map
};

// A map with `planes` zeroed planes; resolution and half angle in degrees. A resolution of 0 or below, or a
// size that no matrix can have, throws ZfError.
ZfSphericalMapping CreateAzimuthalEquidistantMapping(std::int32_t planes, double resolution);
ZfSphericalMapping CreateEquidistantCylindricalMapping(std::int32_t planes, double resolution);
ZfSphericalMapping CreateGnomonicMapping(std::int32_t planes, double halfAngle, std::int32_t size);
ZfSphericalMapping CreateStereographicMapping(std::int32_t planes, double halfAngle, std::int32_t size);
ZfSphericalMapping CreateOrthographicMapping(std::int32_t planes, std::int32_t size);
/// An arc from +z over +x to -z in equal steps; it has no projection and no name.
ZfSphericalMapping CreateOneDimensionalMapping(std::int32_t planes, double resolution);
