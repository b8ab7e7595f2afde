#pragma once

#include <cstdint>
#include <string>

/// A projection of the sphere on an image: pixels, directions, and a drawing rectangle. Directions are unit
/// vectors; pixel coordinates are real, with pixel 0 at 0.0. Each operation says whether the point lies on
/// the map. J. P. Snyder, Map Projections: A Working Manual, USGS Professional Paper 1395 (1987).
class ZfSphericalMappingConvert {
public:
    ZfSphericalMappingConvert() = default;
    ZfSphericalMappingConvert(const ZfSphericalMappingConvert&) = default;
    ZfSphericalMappingConvert& operator=(const ZfSphericalMappingConvert&) = default;
    virtual ~ZfSphericalMappingConvert() = default;

    virtual bool IsValidSize(std::int32_t width, std::int32_t height) const = 0;
    virtual bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                                  double dy, double dz) const = 0;
    /// Into the rectangle from (x0, y0) to (x1, y1).
    virtual bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                                  double dy, double dz) const = 0;
    virtual bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                                  std::int32_t width, std::int32_t height) const = 0;
    virtual std::string Name() const = 0;
    virtual float MaxAngle() const = 0;  ///< degrees from the axis that the map shows
};

/// Upper hemisphere around +z, radius proportional to the polar angle, (width-1)/180 pixels a degree.
class ZfConvertAzimuthalEquidistantMap final : public ZfSphericalMappingConvert {
public:
    bool IsValidSize(std::int32_t width, std::int32_t height) const override { return width == height; }
    bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                          double dy, double dz) const override;
    bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                          double dy, double dz) const override;
    bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                          std::int32_t width, std::int32_t height) const override;
    std::string Name() const override { return "AzimuthalEquidistant"; }
    float MaxAngle() const override { return 90.0F; }
};

/// Whole sphere, columns azimuth, rows polar angle. Pixel coordinates are centres of cells; it draws into no
/// rectangle.
class ZfConvertEquidistantCylindricalMap final : public ZfSphericalMappingConvert {
public:
    bool IsValidSize(std::int32_t /*width*/, std::int32_t /*height*/) const override { return true; }
    bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                          double dy, double dz) const override;
    bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                          double dy, double dz) const override;
    bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                          std::int32_t width, std::int32_t height) const override;
    std::string Name() const override { return "EquidistantCylindrical"; }
    float MaxAngle() const override { return 180.0F; }
};

/// From the centre on the tangent plane at +z. Directions of the lower hemisphere land mirrored through the
/// centre.
class ZfConvertGnomonicMap final : public ZfSphericalMappingConvert {
public:
    explicit ZfConvertGnomonicMap(double degrees) : halfAngle(degrees) {}
    bool IsValidSize(std::int32_t width, std::int32_t height) const override { return width == height; }
    bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                          double dy, double dz) const override;
    bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                          double dy, double dz) const override;
    bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                          std::int32_t width, std::int32_t height) const override;
    std::string Name() const override { return "Gnomonic"; }
    float MaxAngle() const override { return static_cast<float>(halfAngle); }
    virtual void SetHalfAngle(double degrees) { halfAngle = degrees; }

    double halfAngle;  ///< degrees from the axis to the image edge
};

/// From the south pole; its axis falls at (width+1)/2, one pixel off the middle of the other maps.
class ZfConvertStereographicMap final : public ZfSphericalMappingConvert {
public:
    explicit ZfConvertStereographicMap(double degrees) : halfAngle(degrees) {}
    bool IsValidSize(std::int32_t width, std::int32_t height) const override { return width == height; }
    bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                          double dy, double dz) const override;
    bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                          double dy, double dz) const override;
    bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                          std::int32_t width, std::int32_t height) const override;
    std::string Name() const override { return "Stereographic"; }
    float MaxAngle() const override { return static_cast<float>(halfAngle); }

    double halfAngle;  ///< degrees from the axis to the image edge
};

/// Parallel along z on the unit disc.
class ZfConvertOrthographicMap final : public ZfSphericalMappingConvert {
public:
    bool IsValidSize(std::int32_t width, std::int32_t height) const override { return width == height; }
    bool DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height, double dx,
                          double dy, double dz) const override;
    bool DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1, double dx,
                          double dy, double dz) const override;
    bool PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px, double py,
                          std::int32_t width, std::int32_t height) const override;
    std::string Name() const override { return "Orthographic"; }
    float MaxAngle() const override { return 90.0F; }
};
