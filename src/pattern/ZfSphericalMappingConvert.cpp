#include "pattern/ZfSphericalMappingConvert.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"

using namespace qvre;

namespace {

constexpr double kInversePi = 0.3183098861837907;
constexpr double kPiSquared = 9.869604401089358;
constexpr double kPiCubed = 31.006276680299816;
constexpr double kPerRightAngle = 0.011111111111111112;  // 1/90

/// Azimuth of a point of the plane; 0 at the centre.
double Azimuth(double x, double y) {
    return x == 0.0 && y == 0.0 ? 0.0 : std::atan2(y, x);
}

void Direction(double& dx, double& dy, double& dz, double theta, double phi) {
    dx = std::cos(phi) * std::sin(theta);
    dy = std::sin(phi) * std::sin(theta);
    dz = std::cos(theta);
}

bool OnImage(double px, double py, std::int32_t width, std::int32_t height) {
    return 0 <= px && px <= width - 1 && 0 <= py && py <= height - 1;
}

/// A drawing rectangle; radii scale with its half width on both axes.
struct Plane {
    Plane(double left, double right, double top, double bottom)
        : x0(left),
          x1(right),
          y0(top),
          y1(bottom),
          cx((left + right) / 2),
          cy((top + bottom) / 2),
          scale(cx - left) {}

    bool Holds(double x, double y) const { return x0 <= x && x <= x1 && y0 <= y && y <= y1; }

    double x0;
    double x1;
    double y0;
    double y1;
    double cx;
    double cy;
    double scale;
};

/// Radius of the stereographic projection, up to a factor.
double StereographicRadius(double angle) {
    return std::sin(angle) / (std::cos(angle) + 1) * (1 - std::cos(angle)) + std::sin(angle);
}

}  // namespace

bool ZfConvertAzimuthalEquidistantMap::PixelToDirection(double& dx, double& dy, double& dz, double& weight,
                                                        double px, double py, std::int32_t width,
                                                        std::int32_t /*height*/) const {
    const double c = (width - 1) / 2.0;
    const double x = px - c;
    const double y = py - c;
    const double d = std::sqrt(x * x + y * y);
    const double degrees = d / ((width - 1) / 180.0);
    if (degrees > 90) return false;
    const double theta = Radians(degrees);
    const double sine = std::sin(theta);
    // Cosine and sine of the azimuth without the angle.
    dx = d > 0 ? x / d * sine : 0.0;
    dy = d > 0 ? y / d * sine : 0.0;
    dz = std::cos(theta);
    weight = d > 0 ? sine * kPi / (2 * d * c) : kPiSquared / (4 * c * c);
    return true;
}

bool ZfConvertAzimuthalEquidistantMap::DirectionToPixel(double& px, double& py, std::int32_t width,
                                                        std::int32_t height, double dx, double dy,
                                                        double dz) const {
    const double c = (width - 1) / 2.0;
    const double rho = ((width - 1) / 180.0) * Degrees(std::acos(dz));
    const double phi = Azimuth(dx, dy);
    px = std::cos(phi) * rho + c;
    py = std::sin(phi) * rho + c;
    return OnImage(px, py, width, height);
}

bool ZfConvertAzimuthalEquidistantMap::DirectionToPlane(double& x, double& y, double x0, double x1, double y0,
                                                        double y1, double dx, double dy, double dz) const {
    const Plane plane(x0, x1, y0, y1);
    const double rho = plane.scale * kPerRightAngle * Degrees(std::acos(dz));
    const double phi = Azimuth(dx, dy);
    x = std::cos(phi) * rho + plane.cx;
    y = std::sin(phi) * rho + plane.cy;
    return plane.Holds(x, y);
}

bool ZfConvertEquidistantCylindricalMap::PixelToDirection(double& dx, double& dy, double& dz, double& weight,
                                                          double px, double py, std::int32_t width,
                                                          std::int32_t height) const {
    const double theta = py * kPi / (height - 1);
    Direction(dx, dy, dz, theta, px * 2 * kPi / width);
    const bool inner = py - 0.5 >= 0 && py + 0.5 <= height - 1;
    const double rows = height - 1.0;
    weight = inner ? 2 * kPiSquared * std::sin(theta) / (rows * width) : kPiCubed / (4 * rows * rows * width);
    return true;
}

bool ZfConvertEquidistantCylindricalMap::DirectionToPixel(double& px, double& py, std::int32_t width,
                                                          std::int32_t height, double dx, double dy,
                                                          double dz) const {
    double theta = std::acos(std::clamp(dz, -1.0, 1.0));
    if (theta < 0) theta += 2 * kPi;
    px = (Azimuth(dx, dy) * kInversePi) * 0.5 * width;
    py = (height - 1) * (theta * kInversePi);
    if (px <= -0.5) px += width;
    if (px >= width - 0.5) px -= width;
    return -0.5 <= px && px < width - 0.5 && -0.5 <= py && py < height - 0.5;
}

bool ZfConvertEquidistantCylindricalMap::DirectionToPlane(double& /*x*/, double& /*y*/, double /*x0*/,
                                                          double /*x1*/, double /*y0*/, double /*y1*/,
                                                          double /*dx*/, double /*dy*/, double /*dz*/) const {
    return false;
}

bool ZfConvertGnomonicMap::PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px,
                                            double py, std::int32_t width, std::int32_t /*height*/) const {
    const double c = (width - 1) * 0.5;
    const double x = px - c;
    const double y = py - c;
    const double z = c / std::tan(Radians(halfAngle));
    const double n = std::sqrt(x * x + y * y + z * z);
    dx = x / n;
    dy = y / n;
    dz = z / n;
    weight = 1 / (n * n + 1);
    return true;
}

bool ZfConvertGnomonicMap::DirectionToPixel(double& px, double& py, std::int32_t width, std::int32_t height,
                                            double dx, double dy, double dz) const {
    const double c = (width - 1) * 0.5;
    const double phi = Azimuth(dx, dy);
    const double ratio = std::tan(std::acos(dz)) / std::tan(Radians(halfAngle));
    px = std::cos(phi) * ratio * c + c;
    py = std::sin(phi) * ratio * c + c;
    return OnImage(px, py, width, height);
}

bool ZfConvertGnomonicMap::DirectionToPlane(double& x, double& y, double x0, double x1, double y0, double y1,
                                            double dx, double dy, double dz) const {
    const Plane plane(x0, x1, y0, y1);
    const double phi = Azimuth(dx, dy);
    const double ratio = std::tan(std::acos(dz)) / std::tan(Radians(halfAngle));
    x = std::cos(phi) * ratio * plane.scale + plane.cx;
    y = std::sin(phi) * ratio * plane.scale + plane.cy;
    return plane.Holds(x, y);
}

bool ZfConvertStereographicMap::PixelToDirection(double& dx, double& dy, double& dz, double& weight,
                                                 double px, double py, std::int32_t width,
                                                 std::int32_t /*height*/) const {
    const double c = (width + 1) / 2.0;
    const double a = Radians(halfAngle);
    const double s = 2 * std::sin(a) / (std::cos(a) + 1);
    const double x = (px - c) / c * s;
    const double y = (py - c) / c * s;
    const double q = x * x + y * y;
    Direction(dx, dy, dz, std::acos((4 - q) / (q + 4)), Azimuth(x, y));
    weight = 16 / ((q + 4) * (q + 4));
    return true;
}

bool ZfConvertStereographicMap::DirectionToPixel(double& px, double& py, std::int32_t width,
                                                 std::int32_t height, double dx, double dy, double dz) const {
    const double c = (width + 1) / 2.0;
    const double phi = Azimuth(dx, dy);
    const double ratio = StereographicRadius(std::acos(dz)) / StereographicRadius(Radians(halfAngle));
    px = std::cos(phi) * c * ratio + c;
    py = std::sin(phi) * c * ratio + c;
    return OnImage(px, py, width, height);
}

bool ZfConvertStereographicMap::DirectionToPlane(double& x, double& y, double x0, double x1, double y0,
                                                 double y1, double dx, double dy, double dz) const {
    const Plane plane(x0, x1, y0, y1);
    const double phi = Azimuth(dx, dy);
    const double ratio = StereographicRadius(std::acos(dz)) / StereographicRadius(Radians(halfAngle));
    x = std::cos(phi) * plane.scale * ratio + plane.cx;
    y = std::sin(phi) * plane.scale * ratio + plane.cy;
    return plane.Holds(x, y);
}

bool ZfConvertOrthographicMap::PixelToDirection(double& dx, double& dy, double& dz, double& weight, double px,
                                                double py, std::int32_t width,
                                                std::int32_t /*height*/) const {
    const double c = (width - 1) / 2.0;
    const double x = (px - c) / c;
    const double y = (py - c) / c;
    const double q = 1 - x * x - y * y;
    const bool onDisc = q > 0;
    dx = onDisc ? x : 0;
    dy = onDisc ? y : 0;
    dz = onDisc ? std::sqrt(q) : 0;
    weight = dz;
    return onDisc;
}

bool ZfConvertOrthographicMap::DirectionToPixel(double& px, double& py, std::int32_t width,
                                                std::int32_t height, double dx, double dy, double dz) const {
    if (dz < 0) return false;
    const double c = (width - 1) / 2.0;
    px = c * dx + c;
    py = c * dy + c;
    return OnImage(px, py, width, height);
}

bool ZfConvertOrthographicMap::DirectionToPlane(double& x, double& y, double x0, double x1, double y0,
                                                double y1, double dx, double dy, double /*dz*/) const {
    const Plane plane(x0, x1, y0, y1);
    x = plane.scale * dx + plane.cx;
    y = plane.scale * dy + plane.cy;
    return plane.Holds(x, y);
}
