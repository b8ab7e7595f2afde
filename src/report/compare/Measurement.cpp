#include "report/compare/Measurement.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/compare/MeasuredPattern.h"

namespace qvre {

namespace {

/// Standard deviations of the values of all points of a table.
std::vector<double> SigmaOf(const MeasuredPattern& pattern, const std::string& name, bool isModulation,
                            SigmaSource source) {
    if (source == SigmaSource::kNone) return {};
    const bool hasIntensity = !pattern.intensity.empty();
    if (source == SigmaSource::kColumn && pattern.sigma.empty())
        throw ZfError(name + " has no column sigma: leave sigma out, or take it from the counts");
    if (source == SigmaSource::kCounts && !hasIntensity)
        throw ZfError(name + " has no column of counts, whose square roots could be their sigma");
    std::vector<double> sigma(pattern.theta.size());
    for (std::size_t i = 0; i < sigma.size(); ++i) {
        sigma[i] = source == SigmaSource::kColumn ? pattern.sigma[i]
                                                  : std::sqrt(std::max(1.0, pattern.intensity[i]));
        // chi = I/B - 1 is known to sigma/B.
        if (isModulation && hasIntensity) sigma[i] *= (1.0 + pattern.chi[i]) / pattern.intensity[i];
        if (!(sigma[i] > 0.0 && std::isfinite(sigma[i])))
            throw ZfError(fmt::format("{}: sigma is not positive at theta {:g}, phi {:g}", name,
                                      pattern.theta[i], pattern.phi[i]));
    }
    return sigma;
}

std::vector<double> ValuesOf(const MeasuredPattern& pattern, const std::string& name, bool hasBackground) {
    if (!hasBackground) {
        if (pattern.chi.empty())
            throw ZfError(name + " has no column chi: name a background, such as 3 for a cubic polynomial");
        return pattern.chi;
    }
    if (!pattern.intensity.empty()) return pattern.intensity;
    std::vector<double> relative = pattern.chi;
    for (double& value : relative) value += 1.0;
    return relative;
}

/// Half of the points or more stand alone on their rings.
bool MeansTakeAllAway(const PolarRings& rings) {
    const auto alone = std::count(rings.points.begin(), rings.points.end(), 1.0);
    return 2 * static_cast<std::size_t>(alone) >= rings.ringOf.size();
}

}  // namespace

void Measurement::Copy(std::size_t i, Measurement& to) const {
    to.theta.push_back(theta[i]);
    to.phi.push_back(phi[i]);
    to.weight.push_back(weight[i]);
    if (!value.empty()) to.value.push_back(value[i]);
    if (!sigma.empty()) to.sigma.push_back(sigma[i]);
}

Measurement PointsOf(const MeasuredPattern& pattern, const std::string& name, double thetaMin,
                     double thetaMax, bool hasBackground, SigmaSource sigma) {
    Measurement all;
    all.isModulation = !hasBackground;
    all.theta = pattern.theta;
    all.phi = pattern.phi;
    all.value = ValuesOf(pattern, name, hasBackground);
    all.weight.assign(all.theta.size(), 1.0);
    all.sigma = SigmaOf(pattern, name, all.isModulation, sigma);
    Measurement points =
        all.Kept([&](std::size_t i) { return all.theta[i] >= thetaMin && all.theta[i] <= thetaMax; });
    if (points.theta.empty())
        throw ZfError(
            fmt::format("{} has no points with a polar angle from {:g} to {:g} degrees: widen the polar "
                        "range",
                        name, thetaMin, thetaMax));
    return points;
}

Measurement GridOf(double step, double thetaMin, double thetaMax) {
    const auto rings = std::max(1L, std::lround((thetaMax - thetaMin) / step));
    const auto azimuths = std::lround(360.0 / step);
    const double height = (thetaMax - thetaMin) / static_cast<double>(rings);
    Measurement grid;
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

std::vector<double> RingBackground(const BackgroundModel& model, const PolarRings& rings,
                                   const std::vector<double>& intensity) {
    const PolarBackground background(model, rings, intensity);
    std::vector<double> ofRing(rings.Count());
    for (std::size_t ring = 0; ring < ofRing.size(); ++ring) {
        const double value = background.At(rings.theta[ring]);
        ofRing[ring] = value > 0.0 ? value : std::numeric_limits<double>::quiet_NaN();
    }
    std::vector<double> at(intensity.size());
    for (std::size_t i = 0; i < at.size(); ++i) at[i] = ofRing[rings.ringOf[i]];
    return at;
}

WeightedModulation ModulationOf(const Measurement& measurement, const std::optional<BackgroundModel>& model) {
    WeightedModulation result{measurement.value, measurement.weight};
    std::vector<double> background(result.chi.size(), 1.0);
    if (!measurement.isModulation) {
        const PolarRings rings(measurement.theta);
        if (!model->degree && MeansTakeAllAway(rings))
            throw ZfError(
                "Most polar angles have a single point, as in a polar scan: means over the azimuth would "
                "take the whole pattern away. Take a polynomial in the polar angle as background, such as 3");
        background = RingBackground(*model, rings, measurement.value);
        for (std::size_t i = 0; i < background.size(); ++i) {
            if (std::isnan(background[i]))
                throw ZfError(
                    fmt::format("The background is not positive at the polar angle {:g} degrees: choose "
                                "another background or another polar range",
                                measurement.theta[i]));
            result.chi[i] = (measurement.value[i] - background[i]) / background[i];
        }
    }
    if (measurement.sigma.empty()) return result;
    double sum = 0.0;
    for (std::size_t i = 0; i < result.weight.size(); ++i) {
        const double sigma = measurement.sigma[i] / background[i];
        result.weight[i] /= sigma * sigma;
        sum += result.weight[i];
    }
    for (double& weight : result.weight) weight *= static_cast<double>(result.weight.size()) / sum;
    result.meanWeight = sum / static_cast<double>(result.weight.size());
    return result;
}

}  // namespace qvre
