#include "report/compare/PatternComparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kFinestGrid_deg = 0.5;

struct Directions {
    std::vector<double> theta;  // degrees
    std::vector<double> phi;
    std::vector<double> weight;
};

/// A pattern that tells chi = factor * Value + offset, both one number a direction.
struct Sampled {
    SphereImage image;
    std::vector<double> factor;
    double offset = 0.0;
};

void CheckRange(const CompareRequest& request) {
    if (request.thetaMin >= 0.0 && request.thetaMin < request.thetaMax && request.thetaMax <= 180.0) return;
    throw ZfError(fmt::format("The polar range has to rise within 0 and 180 degrees, not from {:g} to {:g}",
                              request.thetaMin, request.thetaMax));
}

/// Centres of cells that divide the range, each ring with the same azimuths.
Directions Grid(double step, double thetaMin, double thetaMax) {
    const auto rings = std::max(1L, std::lround((thetaMax - thetaMin) / step));
    const auto azimuths = std::lround(360.0 / step);
    const double height = (thetaMax - thetaMin) / static_cast<double>(rings);
    Directions grid;
    for (long ring = 0; ring < rings; ++ring) {
        const double theta = thetaMin + (static_cast<double>(ring) + 0.5) * height;
        for (long azimuth = 0; azimuth < azimuths; ++azimuth) {
            grid.theta.push_back(theta);
            grid.phi.push_back(360.0 * static_cast<double>(azimuth) / static_cast<double>(azimuths));
            grid.weight.push_back(std::sin(theta * kDegree));
        }
    }
    return grid;
}

double GridStep(const SphereImage& image) {
    return std::max(kFinestGrid_deg, image.Resolution_deg());
}

/// chi of the measured points in the range.
std::vector<double> MeasuredModulation(const CompareRequest& request, Directions& directions) {
    const MeasuredPattern measured = LoadMeasuredPattern(request.measured);
    const std::vector<double>& values = request.background ? measured.intensity : measured.chi;
    if (values.empty())
        throw ZfError(request.measured +
                      (request.background
                           ? " has no column of intensities: compare it without a background"
                           : " has no column chi: name a background, such as 3 for a cubic polynomial"));
    std::vector<double> chi;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (measured.theta[i] < request.thetaMin || measured.theta[i] > request.thetaMax) continue;
        directions.theta.push_back(measured.theta[i]);
        directions.phi.push_back(measured.phi[i]);
        chi.push_back(values[i]);
    }
    directions.weight.assign(chi.size(), 1.0);
    if (chi.empty())
        throw ZfError(
            fmt::format("{} has no points with a polar angle from {:g} to {:g} degrees: widen the polar "
                        "range",
                        request.measured, request.thetaMin, request.thetaMax));
    if (!request.background) return chi;
    const PolarBackground background(*request.background, directions.theta, chi);
    for (std::size_t i = 0; i < chi.size(); ++i) chi[i] = background.Modulation(directions.theta[i], chi[i]);
    return chi;
}

SphereImage Load(const ImageFiles& files, const CompareRequest& request) {
    SphereImage image = LoadSphereImage(files.image).image;
    if (request.thetaMax * kDegree > image.MaxTheta() + 1e-9)
        throw ZfError(fmt::format("{} ends at the polar angle {:g} degrees: narrow the polar range",
                                  files.image, Degrees(image.MaxTheta())));
    if (!files.i0.empty()) return Modulation(image, LoadSphereImage(files.i0).image);
    if (!request.background)
        throw ZfError(
            fmt::format("The I0 image of {} is not given: add it, or name a background to be taken "
                        "away, such as 3 for a cubic polynomial",
                        files.image));
    return image;
}

/// The background of an image is that of its full rings within the range.
PolarBackground BackgroundOf(const SphereImage& image, const CompareRequest& request) {
    const Directions grid = Grid(GridStep(image), request.thetaMin, request.thetaMax);
    std::vector<double> intensity;
    for (std::size_t i = 0; i < grid.theta.size(); ++i)
        intensity.push_back(image.Value(grid.theta[i] * kDegree, grid.phi[i] * kDegree));
    return {*request.background, grid.theta, intensity};
}

Sampled Sample(SphereImage image, bool hasI0, const CompareRequest& request, const Directions& directions) {
    std::vector<double> factor(directions.theta.size(), 1.0);
    if (hasI0) return {std::move(image), std::move(factor), 0.0};
    const PolarBackground background = BackgroundOf(image, request);
    for (std::size_t i = 0; i < factor.size(); ++i)
        factor[i] = background.Modulation(directions.theta[i], 1.0) + 1.0;  // 1/B, refused unless positive
    return {std::move(image), std::move(factor), -1.0};
}

double TurnedModulation(const Sampled& pattern, const Directions& directions, std::size_t i,
                        double rotation) {
    const double value =
        pattern.image.Value(directions.theta[i] * kDegree, (directions.phi[i] - rotation) * kDegree);
    return pattern.factor[i] * value + pattern.offset;
}

std::vector<double> Turned(const Sampled& pattern, const Directions& directions, double rotation) {
    std::vector<double> chi(directions.theta.size());
    for (std::size_t i = 0; i < chi.size(); ++i) chi[i] = TurnedModulation(pattern, directions, i, rotation);
    return chi;
}

/// c = sum w a b / sqrt(sum w a^2 sum w b^2), 0 for a b that vanishes. The best scale makes R = 1 - c.
double Likeness(const std::vector<double>& a, const Sampled& b, const Directions& directions,
                double rotation) {
    double aa = 0.0;
    double bb = 0.0;
    double ab = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double turned = TurnedModulation(b, directions, i, rotation);
        aa += directions.weight[i] * a[i] * a[i];
        bb += directions.weight[i] * turned * turned;
        ab += directions.weight[i] * a[i] * turned;
    }
    return aa > 0.0 && bb > 0.0 ? ab / std::sqrt(aa * bb) : 0.0;
}

/// Whole degrees 0, 1, -1, 2, -2, ... 180.
std::vector<double> WholeDegrees() {
    std::vector<double> angles = {0.0};
    for (int k = 1; k < 180; ++k)
        angles.insert(angles.end(), {static_cast<double>(k), static_cast<double>(-k)});
    angles.push_back(180.0);
    return angles;
}

/// Golden-section search one degree around an angle, which stays unless something better is found.
template <class Function>
double Refined(const Function& likeness, double angle) {
    constexpr int kSteps = 30;  // to a millionth of a degree
    const double ratio = (std::sqrt(5.0) - 1.0) / 2.0;
    double low = angle - 1.0;
    double high = angle + 1.0;
    std::array<double, 2> at = {high - ratio * (high - low), low + ratio * (high - low)};
    std::array<double, 2> value = {likeness(at[0]), likeness(at[1])};
    for (int step = 0; step < kSteps; ++step) {
        if (value[0] >= value[1]) {
            high = at[1];
            at = {high - ratio * (high - low), at[0]};
            value = {likeness(at[0]), value[0]};
        } else {
            low = at[0];
            at = {at[1], low + ratio * (high - low)};
            value = {value[1], likeness(at[1])};
        }
    }
    const std::size_t better = value[0] >= value[1] ? 0 : 1;
    return value[better] > likeness(angle) + 1e-13 ? at[better] : angle;
}

double BestRotation(const std::vector<double>& a, const Sampled& b, const Directions& directions) {
    // A pattern of n-fold symmetry has n best rotations, equal but for the rounding of 32-bit pixels.
    constexpr double kEqual = 1e-6;
    const std::vector<double> angles = WholeDegrees();
    std::vector<double> likeness(angles.size());
    const auto count = static_cast<std::int64_t>(angles.size());
#pragma omp parallel for schedule(static)
    for (std::int64_t k = 0; k < count; ++k) {
        const auto i = static_cast<std::size_t>(k);
        likeness[i] = Likeness(a, b, directions, angles[i]);
    }
    const double best = *std::max_element(likeness.begin(), likeness.end());
    const auto first = std::find_if(likeness.begin(), likeness.end(),
                                    [best](double value) { return value >= best - kEqual; });
    const double angle = angles[static_cast<std::size_t>(first - likeness.begin())];
    const double refined =
        Refined([&](double rotation) { return Likeness(a, b, directions, rotation); }, angle);
    return refined > 180.0 ? refined - 360.0 : refined;
}

std::string Stem(const std::string& path) {
    return std::filesystem::path(path).stem().string();
}

}  // namespace

void CheckMeasuredPoints(const CompareRequest& request) {
    CheckRange(request);
    Directions directions;
    const std::vector<double> chi = MeasuredModulation(request, directions);
    CompareModulations(chi, chi, directions.weight);
}

CompareResult ComparePatterns(const CompareRequest& request) {
    CheckRange(request);
    Directions directions;
    std::vector<double> chiA;
    if (!request.measured.empty()) chiA = MeasuredModulation(request, directions);
    SphereImage image = Load(request.second, request);
    if (request.measured.empty()) {
        SphereImage first = Load(request.first, request);
        directions = Grid(std::min(GridStep(first), GridStep(image)), request.thetaMin, request.thetaMax);
        chiA =
            Turned(Sample(std::move(first), !request.first.i0.empty(), request, directions), directions, 0.0);
    }
    const Sampled second = Sample(std::move(image), !request.second.i0.empty(), request, directions);
    CompareResult result;
    result.nameA = Stem(request.measured.empty() ? request.first.image : request.measured);
    result.nameB = Stem(request.second.image);
    if (request.rotate) result.rotation = BestRotation(chiA, second, directions);
    result.chiA = std::move(chiA);
    result.chiB = Turned(second, directions, result.rotation);
    result.agreement = CompareModulations(result.chiA, result.chiB, directions.weight);
    result.theta = std::move(directions.theta);
    result.phi = std::move(directions.phi);
    result.weight = std::move(directions.weight);
    return result;
}

}  // namespace qvre
