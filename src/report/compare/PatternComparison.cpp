#include "report/compare/PatternComparison.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/compare/MultipoleFactor.h"
#include "report/sphere/Modulation.h"

namespace qvre {

namespace {

constexpr double kFinestGrid_deg = 0.5;

void CheckRange(const CompareRequest& request) {
    if (request.thetaMin >= 0.0 && request.thetaMin < request.thetaMax && request.thetaMax <= 180.0) return;
    throw ZfError(fmt::format("The polar range has to rise within 0 and 180 degrees, not from {:g} to {:g}",
                              request.thetaMin, request.thetaMax));
}

CalculatedPattern Load(const ImageFiles& files, const CompareRequest& request) {
    if (files.i0.empty() && !request.background)
        throw ZfError(
            fmt::format("The I0 image of {} is not given: add it, or name a background to be taken "
                        "away, such as 3 for a cubic polynomial",
                        files.image));
    CalculatedPattern pattern(files, request.instrument);
    if (request.thetaMax > pattern.MaxTheta_deg() + 1e-7)
        throw ZfError(fmt::format("{} ends at the polar angle {:g} degrees: narrow the polar range",
                                  files.image, pattern.MaxTheta_deg()));
    return pattern;
}

std::string NameOf(const BackgroundModel& model) {
    return model.degree ? fmt::format("polynomial of degree {} in the polar angle", *model.degree)
                        : "means over the azimuth";
}

Measurement MeasuredPoints(const CompareRequest& request, std::string& modulation) {
    const MeasuredPattern pattern = LoadMeasuredPattern(request.measured, request.scan);
    modulation = !request.background         ? "its column chi"
                 : pattern.intensity.empty() ? NameOf(*request.background) + ", of 1 + its column chi"
                                             : NameOf(*request.background);
    return PointsOf(pattern, request.measured, request.thetaMin, request.thetaMax,
                    request.background.has_value(), request.sigma);
}

std::string ModulationText(const CalculatedPattern& pattern, const CompareRequest& request) {
    return pattern.HasI0() ? "I0" : NameOf(*request.background);
}

/// An image is of one energy. Tables of several are read all the same, for scans over energies.
void RefuseEnergies(const CompareRequest& request) {
    constexpr double kOneEnergy = 1e-3;
    const std::vector<double> energy = LoadMeasuredPattern(request.measured, request.scan).energy;
    if (energy.empty()) return;
    const auto [low, high] = std::minmax_element(energy.begin(), energy.end());
    if (*high - *low > kOneEnergy * *high)
        throw ZfError(fmt::format(
            "{} runs over energies, from {:g} to {:g} eV, and an image is of one: keep the points of "
            "that energy",
            request.measured, *low, *high));
}

double GridStep(const CalculatedPattern& pattern) {
    return std::max(kFinestGrid_deg, pattern.Resolution_deg());
}

/// The first image in the directions of a grid takes the place of a measurement.
Measurement ImageAsMeasurement(const CompareRequest& request, const CalculatedPattern& second,
                               CompareResult& result) {
    const CalculatedPattern first = Load(request.first, request);
    result.modulationA = ModulationText(first, request);
    Measurement grid =
        GridOf(std::min(GridStep(first), GridStep(second)), request.thetaMin, request.thetaMax);
    grid.value = first.Values(grid, {});
    grid.isModulation = first.HasI0();
    return grid;  // chi is not a number where I0 is faint
}

/// c = sum w a b / sqrt(sum w a^2 sum w b^2), 0 for a b that vanishes. The best scale makes R = 1 - c. Where
/// b is not a number it takes no part, but a does: leaving directions out is not to pay.
double LikenessOf(const WeightedModulation& a, const std::vector<double>& b) {
    double aa = 0.0;
    double bb = 0.0;
    double ab = 0.0;
    for (std::size_t i = 0; i < b.size(); ++i) {
        aa += a.weight[i] * a.chi[i] * a.chi[i];
        if (std::isnan(b[i])) continue;
        bb += a.weight[i] * b[i] * b[i];
        ab += a.weight[i] * a.chi[i] * b[i];
    }
    return aa > 0.0 && bb > 0.0 ? ab / std::sqrt(aa * bb) : 0.0;
}

/// The directions that stay above the horizon under every setting that is looked at.
Measurement AlwaysAbove(const Measurement& all, const CompareRequest& request, double horizon) {
    const SearchedSettings& searched = request.searched;
    const double offset = searched.thetaOffset ? kLargestOffset : request.setting.thetaOffset;
    const double tilt = searched.tilt ? kLargestTilt : std::abs(request.setting.tilt);
    if (offset <= 0.0 && tilt == 0.0) return all;
    Measurement above =
        all.Kept([&](std::size_t i) { return all.theta[i] + std::max(0.0, offset) + tilt <= horizon; });
    if (above.theta.size() < 2)
        throw ZfError(fmt::format(
            "Fewer than 2 directions lie {:g} degrees above the horizon, as far as the search may "
            "move them: widen the polar range, or give the polar offset and the tilt",
            std::max(0.0, offset) + tilt));
    return above;
}

/// Some `enough` directions; rings and azimuths are thinned so that both stay dense enough for a background.
Measurement Thinned(const Measurement& all, double enough) {
    constexpr double kPointsOfRing = 12.0;
    constexpr double kRings = 16.0;
    const PolarRings rings(all.theta);
    const auto points = static_cast<double>(all.theta.size());
    const auto count = static_cast<double>(rings.Count());
    const double surplus = std::max(1.0, points / enough);
    const auto along = static_cast<std::size_t>(std::clamp(points / count / kPointsOfRing, 1.0, surplus));
    const auto across = static_cast<std::size_t>(
        std::clamp(surplus / static_cast<double>(along), 1.0, std::max(1.0, count / kRings)));
    std::vector<std::size_t> placeInRing(rings.Count(), 0);
    return all.Kept([&](std::size_t i) {
        const std::size_t ring = rings.ringOf[i];
        return ring % across == 0 && placeInRing[ring]++ % along == ring / across % along;
    });
}

/// How well the calculation agrees with a measurement under a setting.
class Agreeing {
public:
    Agreeing(const CalculatedPattern& pattern, Measurement measurement, const CompareRequest& request)
        : measurement_(std::move(measurement)),
          measured_(ModulationOf(measurement_, request.background)),
          calculated_(pattern, measurement_, request.background) {}
    Agreeing(const Agreeing&) = delete;
    Agreeing& operator=(const Agreeing&) = delete;

    double operator()(const SampleSetting& setting) const {
        return LikenessOf(measured_, calculated_.Under(setting));
    }

private:
    Measurement measurement_;
    WeightedModulation measured_;
    CalculatedModulation calculated_;
};

/// What is looked for begins at a known setting; the rest is as given, which need not be as it was then.
SampleSetting StartOf(const CompareRequest& request, const SampleSetting& near) {
    SampleSetting start = request.setting;
    if (request.searched.rotation) start.rotation = near.rotation;
    if (request.searched.thetaOffset) start.thetaOffset = near.thetaOffset;
    if (request.searched.tilt) {
        start.tilt = near.tilt;
        start.tiltAzimuth = near.tiltAzimuth;
    }
    return start;
}

SampleSetting FoundSetting(const Measurement& all, const CalculatedPattern& pattern,
                           const CompareRequest& request, const std::optional<SampleSetting>& near) {
    const Measurement known = all.Kept([&all](std::size_t i) { return !std::isnan(all.value[i]); });
    const Measurement above = AlwaysAbove(known, request, pattern.MaxTheta_deg());
    const double few = !request.searched.tilt ? 1000.0 : request.searched.thetaOffset ? 250.0 : 500.0;
    constexpr double kMany = 10000.0;  // more than measured; the grid of two images
    const Agreeing full(pattern, Thinned(above, kMany), request);
    if (near) return SettingNear(StartOf(request, *near), request.searched, std::cref(full));
    const Agreeing quick(pattern, Thinned(above, few), request);
    return BestSetting(request.setting, request.searched, std::cref(quick), std::cref(full));
}

/// The directions in which both have a value.
Measurement WithValues(const Measurement& all, const CalculatedPattern& pattern, CompareResult& result) {
    const std::vector<double> values = pattern.Values(all, result.setting);
    const SampleFrame frame(result.setting);
    const auto hasBoth = [&](std::size_t i) { return !std::isnan(values[i]) && !std::isnan(all.value[i]); };
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (hasBoth(i)) {
            result.number.push_back(i);
            continue;
        }
        const double theta = Degrees(frame.InCalculation(all.theta[i], all.phi[i]).theta);
        ++(theta > pattern.MaxTheta_deg() + 1e-7 ? result.belowHorizon : result.leftOut);
    }
    Measurement kept = all.Kept(hasBoth);
    if (kept.theta.size() < 2)
        throw ZfError(
            "Fewer than 2 directions lie above the horizon where I0 is not faint: check the polar offset and "
            "the tilt, or take a background away instead of I0");
    return kept;
}

std::string Stem(const std::string& path) {
    return std::filesystem::path(path).stem().string();
}

void Compare(const CompareRequest& request, const Measurement& all, const CalculatedPattern& pattern,
             const std::optional<SampleSetting>& near, CompareResult& result) {
    result.nameB = Stem(request.second.image);
    result.modulationB = ModulationText(pattern, request);
    result.setting =
        request.searched.Any() ? FoundSetting(all, pattern, request, near) : Canonical(request.setting);
    const Measurement measurement = WithValues(all, pattern, result);
    WeightedModulation measured = ModulationOf(measurement, request.background);
    result.chiB = CalculatedModulation(pattern, measurement, request.background).Under(result.setting);
    result.chiA = std::move(measured.chi);
    result.weight = std::move(measured.weight);
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    result.multipoleR = MultipoleFactor(measurement.theta, measurement.phi, result.chiA, result.chiB);
    result.theta = measurement.theta;
    result.phi = measurement.phi;
}

}  // namespace

std::optional<BackgroundModel> UsualBackground(const CompareRequest& request) {
    constexpr int kUsualDegree = 3;
    const MeasuredPattern pattern = LoadMeasuredPattern(request.measured, request.scan);
    if (!pattern.chi.empty()) return std::nullopt;
    const Measurement points =
        PointsOf(pattern, request.measured, request.thetaMin, request.thetaMax, true, SigmaSource::kNone);
    if (PolarRings(points.theta).Count() <= kUsualDegree) return BackgroundModel{};
    return BackgroundModel{kUsualDegree};
}

void CheckMeasuredPoints(const CompareRequest& request) {
    CheckRange(request);
    CheckSetting(request.setting);
    std::string modulation;
    const WeightedModulation measured = ModulationOf(MeasuredPoints(request, modulation), request.background);
    CompareModulations(measured.chi, measured.chi, measured.weight);
}

CompareResult ComparePatterns(const CompareRequest& request) {
    CheckInstrument(request.instrument);
    if (!request.measured.empty()) return MeasuredComparison(request).With(Load(request.second, request));
    CheckRange(request);
    CheckSetting(request.setting);
    const CalculatedPattern pattern = Load(request.second, request);
    CompareResult result;
    result.nameA = Stem(request.first.image);
    Compare(request, ImageAsMeasurement(request, pattern, result), pattern, std::nullopt, result);
    return result;
}

MeasuredComparison::MeasuredComparison(const CompareRequest& request) : request_(request) {
    CheckRange(request);
    CheckSetting(request.setting);
    RefuseEnergies(request);
    points_ = MeasuredPoints(request, modulation_);
}

CompareResult MeasuredComparison::With(const CalculatedPattern& pattern,
                                       const std::optional<SampleSetting>& near) const {
    CompareResult result;
    result.nameA = Stem(request_.measured);
    result.modulationA = modulation_;
    Compare(request_, points_, pattern, near, result);
    return result;
}

std::string SettingText(const CompareRequest& request, const SampleSetting& setting) {
    std::string text;
    if (request.searched.thetaOffset || setting.thetaOffset != 0.0)
        text += fmt::format("polar offset {:.3f} degrees", setting.thetaOffset);
    if (request.searched.tilt || setting.tilt != 0.0)
        text += fmt::format("{}tilt {:.3f} degrees towards {:.1f} degrees", text.empty() ? "" : ", ",
                            setting.tilt, setting.tiltAzimuth);
    return text;
}

std::string ComparisonRemarks(const CompareRequest& request, const CompareResult& result) {
    std::string text;
    if (request.background && request.first.i0.empty() != request.second.i0.empty())
        text +=
            "note: one side loses its I0 and the other a background; without I0 both lose the same and agree "
            "better\n";
    const auto all = static_cast<double>(result.Directions() + result.leftOut + result.belowHorizon);
    if (result.leftOut > 0)
        text += fmt::format("left out: {} of {} directions, where I0 is below {:g} percent of its maximum\n",
                            result.leftOut, all, 100.0 * kFaintPart);
    if (result.belowHorizon > 0)
        text +=
            fmt::format("left out: {} of {} directions, which polar offset and tilt turn below the surface\n",
                        result.belowHorizon, all);
    constexpr double kAtEnd = 0.01;
    if (request.searched.thetaOffset && std::abs(result.setting.thetaOffset) > kLargestOffset - kAtEnd)
        text +=
            fmt::format("the polar offset is at the end of the search, {:g} degrees: it is not a minimum\n",
                        kLargestOffset);
    if (request.searched.tilt && result.setting.tilt > kLargestTilt - kAtEnd)
        text += fmt::format("the tilt is at the end of the search, {:g} degrees: it is not a minimum\n",
                            kLargestTilt);
    return text;
}

}  // namespace qvre
