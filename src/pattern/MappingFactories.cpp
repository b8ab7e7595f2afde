#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"
#include "foundation/Truncate.h"
#include "foundation/ZfError.h"
#include "pattern/ZfSphericalMapping.h"
#include "pattern/ZfSphericalMappingConvert.h"

using namespace qvre;

namespace {

ZfLDoubleMatrix Filled(std::int32_t width, std::int32_t height, double value) {
    ZfLDoubleMatrix matrix(width, height);
    std::fill(matrix.Data(), matrix.Data() + matrix.Count(), value);
    return matrix;
}

ZfSphericalMapping EmptyMapping(std::int32_t planes, std::int32_t width, std::int32_t height) {
    ZfSphericalMapping mapping;
    for (std::int32_t p = 0; p < planes; ++p) mapping.planes.push_back(Filled(width, height, 0.0));
    mapping.directionX = Filled(width, height, 0.0);
    mapping.directionY = mapping.directionX;
    mapping.directionZ = mapping.directionX;
    mapping.pixelWeight = Filled(width, height, 1.0);
    return mapping;
}

ZfSphericalMapping Project(const ZfSphericalMappingConvert& converter, std::int32_t planes,
                           std::int32_t width, std::int32_t height) {
    ZfSphericalMapping mapping = EmptyMapping(planes, width, height);
    double* const directionX = mapping.directionX.Data();
    double* const directionY = mapping.directionY.Data();
    double* const directionZ = mapping.directionZ.Data();
    double* const pixelWeight = mapping.pixelWeight.Data();
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            const std::int64_t i = std::int64_t{y} * width + x;
            double dx = 0.0;
            double dy = 0.0;
            double dz = 0.0;
            double weight = 0.0;
            const bool inside = converter.PixelToDirection(dx, dy, dz, weight, x, y, width, height);
            directionX[i] = inside ? dx : 0.0;
            directionY[i] = inside ? dy : 0.0;
            directionZ[i] = inside ? dz : 0.0;
            pixelWeight[i] = inside ? weight : 0.0;
        }
    }
    mapping.name = converter.Name();
    return mapping;
}

/// Pixels along half a turn. A resolution that is no step at all is refused as the size that it gives.
std::int32_t HalfTurn(double resolution) {
    if (!(resolution > 0.0)) throw ZfError("matrix creation Parameter Error");
    return TruncateToInt32(180 / resolution + 1);
}

}  // namespace

ZfSphericalMapping CreateAzimuthalEquidistantMapping(std::int32_t planes, double resolution) {
    const std::int32_t size = HalfTurn(resolution);
    return Project(ZfConvertAzimuthalEquidistantMap(), planes, size, size);
}

ZfSphericalMapping CreateEquidistantCylindricalMapping(std::int32_t planes, double resolution) {
    const std::int32_t height = HalfTurn(resolution);
    return Project(ZfConvertEquidistantCylindricalMap(), planes, TruncateToInt32(360 / resolution), height);
}

ZfSphericalMapping CreateGnomonicMapping(std::int32_t planes, double halfAngle, std::int32_t size) {
    return Project(ZfConvertGnomonicMap(halfAngle), planes, size, size);
}

ZfSphericalMapping CreateStereographicMapping(std::int32_t planes, double halfAngle, std::int32_t size) {
    return Project(ZfConvertStereographicMap(halfAngle), planes, size, size);
}

ZfSphericalMapping CreateOrthographicMapping(std::int32_t planes, std::int32_t size) {
    return Project(ZfConvertOrthographicMap(), planes, size, size);
}

ZfSphericalMapping CreateOneDimensionalMapping(std::int32_t planes, double resolution) {
    const std::int32_t width = HalfTurn(resolution);
    ZfSphericalMapping mapping = EmptyMapping(planes, width, 1);
    for (std::int32_t i = 0; i < width; ++i) {
        const double angle = Radians(i * resolution);
        mapping.directionX.At(i, 0) = std::sin(angle);
        mapping.directionZ.At(i, 0) = std::cos(angle);
    }
    return mapping;
}
