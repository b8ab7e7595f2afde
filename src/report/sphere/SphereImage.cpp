#include "report/sphere/SphereImage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr std::int32_t kSmallestSide = 17;  // so that four pixels lie inside on every line of the frame
constexpr std::int32_t kFrame = 3;          // pixels; a stencil at the rim reaches 2 sqrt(2) beyond it
constexpr double kRimRounding = 1e-9;

std::string SizeText(const SphereImage& image) {
    return fmt::format("{} x {}", image.Width(), image.Height());
}

void CheckShape(SphereMap map, std::int32_t width, std::int32_t height, std::size_t count) {
    const std::string start = fmt::format("The image of {} x {} pixels ", width, height);
    if (width < kSmallestSide || height < kSmallestSide)
        throw ZfError(fmt::format("{}is too small for a map of the sphere: {} x {} are the least", start,
                                  kSmallestSide, kSmallestSide));
    if (!ProjectionOf(map).IsValidSize(width, height))
        throw ZfError(start + "is not square, as an azimuthal map has to be");
    if (count != static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
        throw ZfError(fmt::format("{}holds {} values", start, count));
}

/// Weights of the four points -1, 0, 1, 2 at t in [0, 1].
std::array<double, 4> CubicWeights(double t) {
    const double s = 1.0 - t;
    return {-0.5 * t * s * s, 1.0 + t * t * (1.5 * t - 2.5), 1.0 + s * s * (1.5 * s - 2.5), -0.5 * s * t * t};
}

/// The cubic through the first four numbers that follow `point` in steps of `step`, NaN being none, at
/// `point`.
double Continued(const double* point, std::ptrdiff_t step) {
    std::ptrdiff_t k = 1;
    while (std::isnan(point[k * step])) ++k;
    const auto d = static_cast<double>(k);
    const double* const p = point + k * step;
    return (d + 1) * (d + 2) * (d + 3) / 6 * p[0] - d * (d + 2) * (d + 3) / 2 * p[step] +
           d * (d + 1) * (d + 3) / 2 * p[2 * step] - d * (d + 1) * (d + 2) / 6 * p[3 * step];
}

std::int32_t Floor(double x) {
    return static_cast<std::int32_t>(std::floor(x));
}

}  // namespace

SphereImage::SphereImage(SphereMap map, std::int32_t width, std::int32_t height, std::vector<double> pixels)
    : map_(map), width_(width), height_(height), pixels_(std::move(pixels)) {
    CheckShape(map, width, height, pixels_.size());
    for (const SpherePixel& p : Pixels()) {
        if (!std::isfinite(p.value))
            throw ZfError(
                fmt::format("The pixel at column {}, row {} is not a finite number", p.column, p.row));
    }
    if (map_ == SphereMap::kAzimuthalEquidistant) ContinueBeyondRim();
}

double SphereImage::MaxTheta() const {
    return map_ == SphereMap::kAzimuthalEquidistant ? kPi / 2 : kPi;
}

std::vector<SpherePixel> SphereImage::Pixels() const {
    const ZfSphericalMappingConvert& converter = ProjectionOf(map_);
    std::vector<SpherePixel> result;
    result.reserve(pixels_.size());
    for (std::int32_t y = 0; y < height_; ++y) {
        for (std::int32_t x = 0; x < width_; ++x) {
            double dx = 0.0;
            double dy = 0.0;
            double dz = 0.0;
            double weight = 0.0;
            if (!converter.PixelToDirection(dx, dy, dz, weight, x, y, width_, height_)) continue;
            const double phi = std::atan2(dy, dx);
            result.push_back({x, y, std::atan2(std::hypot(dx, dy), dz), phi < 0 ? phi + 2 * kPi : phi, weight,
                              pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                      static_cast<std::size_t>(x)]});
        }
    }
    return result;
}

SphereImage SphereImage::Transformed(const std::function<double(double theta, double phi)>& f) const {
    const std::vector<SpherePixel> points = Pixels();
    std::vector<double> values(pixels_.size(), 0.0);
    const auto count = static_cast<std::int64_t>(points.size());
    // One writer a pixel; the cost varies little from pixel to pixel.
#pragma omp parallel for schedule(static)
    for (std::int64_t i = 0; i < count; ++i) {
        const SpherePixel& p = points[static_cast<std::size_t>(i)];
        values[static_cast<std::size_t>(p.row) * static_cast<std::size_t>(width_) +
               static_cast<std::size_t>(p.column)] = f(p.theta, p.phi);
    }
    return {map_, width_, height_, std::move(values)};
}

double SphereImage::Value(double theta, double phi) const {
    if (!(theta >= 0.0 && theta <= MaxTheta() + kRimRounding) || !std::isfinite(phi))
        return std::numeric_limits<double>::quiet_NaN();
    return map_ == SphereMap::kAzimuthalEquidistant ? DiscValue(theta, phi) : CylinderValue(theta, phi);
}

double SphereImage::DiscValue(double theta, double phi) const {
    const double centre = (width_ - 1) / 2.0;
    const double radius = theta * (width_ - 1) / kPi;
    const double x = centre + radius * std::cos(phi);
    const double y = centre + radius * std::sin(phi);
    const std::int32_t column = Floor(x);
    const std::int32_t row = Floor(y);
    const auto across = CubicWeights(x - column);
    const auto along = CubicWeights(y - row);
    const std::ptrdiff_t stride = width_ + 2 * kFrame;
    const double* line = framed_.data() + (row - 1 + kFrame) * stride + (column - 1 + kFrame);
    double sum = 0.0;
    for (const double weight : along) {
        sum +=
            weight * (across[0] * line[0] + across[1] * line[1] + across[2] * line[2] + across[3] * line[3]);
        line += stride;
    }
    return sum;
}

/// A row beyond a pole is the row as far on its other side, half a turn away.
double SphereImage::CylinderValue(double theta, double phi) const {
    const double column = phi / (2 * kPi) * width_;
    const double y = theta / kPi * (height_ - 1);
    const std::int32_t row = std::min(Floor(y), height_ - 2);
    const auto weights = CubicWeights(y - row);
    const std::int32_t last = height_ - 1;
    double sum = 0.0;
    for (std::int32_t i = 0; i < 4; ++i) {
        const std::int32_t r = row - 1 + i;
        const bool beyond = r < 0 || r > last;
        const double value =
            beyond ? RowValue(r < 0 ? -r : 2 * last - r, column + width_ / 2.0) : RowValue(r, column);
        sum += weights[static_cast<std::size_t>(i)] * value;
    }
    return sum;
}

double SphereImage::RowValue(std::int32_t row, double column) const {
    const double wrapped = column - width_ * std::floor(column / width_);
    const std::int32_t first = Floor(wrapped);
    const auto weights = CubicWeights(wrapped - first);
    const double* const line =
        pixels_.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(width_);
    double sum = 0.0;
    for (std::int32_t i = 0; i < 4; ++i)
        sum += weights[static_cast<std::size_t>(i)] * line[(first - 1 + i + width_) % width_];
    return sum;
}

/// Along the axis on which a pixel is farther from the centre, its line meets the rim steeply, at 45 degrees
/// or more, and has at least four pixels inside.
void SphereImage::ContinueBeyondRim() {
    const std::ptrdiff_t stride = width_ + 2 * kFrame;
    framed_.assign(static_cast<std::size_t>(stride * stride), std::numeric_limits<double>::quiet_NaN());
    for (const SpherePixel& p : Pixels())
        framed_[static_cast<std::size_t>((p.row + kFrame) * stride + p.column + kFrame)] = p.value;
    const std::vector<double> inside = framed_;
    const double centre = (width_ - 1) / 2.0 + kFrame;
    const double reach = (width_ - 1) / 2.0 + kFrame;  // of stencils
    for (std::ptrdiff_t y = 0; y < stride; ++y) {
        for (std::ptrdiff_t x = 0; x < stride; ++x) {
            const double rx = static_cast<double>(x) - centre;
            const double ry = static_cast<double>(y) - centre;
            const auto i = static_cast<std::size_t>(y * stride + x);
            if (!std::isnan(inside[i]) || std::hypot(rx, ry) > reach) continue;
            const std::ptrdiff_t along = std::abs(rx) >= std::abs(ry) ? 1 : stride;
            const double distance = along == 1 ? rx : ry;
            framed_[i] = Continued(inside.data() + i, distance > 0 ? -along : along);
        }
    }
}

void CheckSameGrid(const SphereImage& a, const SphereImage& b) {
    if (a.Map() != b.Map())
        throw ZfError(fmt::format("The images are on different maps, {} and {}: calculate both on the same",
                                  ProjectionOf(a.Map()).Name(), ProjectionOf(b.Map()).Name()));
    if (a.Width() != b.Width() || a.Height() != b.Height())
        throw ZfError(
            fmt::format("The images have different sizes, {} and {} pixels: calculate both with the "
                        "same resolution",
                        SizeText(a), SizeText(b)));
}

}  // namespace qvre
