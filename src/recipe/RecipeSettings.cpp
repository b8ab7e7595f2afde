#include "recipe/RecipeSettings.h"

#include <fmt/format.h>

#include <vector>

#include "foundation/Constants.h"
#include "recipe/RecipePictures.h"
#include "report/picture/ComparisonOutput.h"

namespace qvre {

namespace {

double Length(RecipeTable& section, const std::string& key) {
    return section.NotNegative(key, RecipeUnit::kAngstrom, 0.0) * kAngstrom_m;
}

void ReadPolarRange(RecipeTable& section, CompareRequest& request) {
    const std::vector<double> range = section.Numbers("theta", RecipeUnit::kDegree);
    if (range.empty()) return;
    if (range.size() != 2 || !(0.0 <= range[0] && range[0] < range[1] && range[1] <= 90.0))
        section.Fail("theta", "has to be a list of two polar angles from 0 to 90, the lower one first");
    request.thetaMin = range[0];
    request.thetaMax = range[1];
}

/// How the sample stands: numbers, or true for what is to be found.
void ReadSetting(RecipeTable& section, CompareRequest& request) {
    SampleSetting& setting = request.setting;
    SearchedSettings& searched = request.searched;
    searched.rotation = section.Flag("rotate", false);
    if (searched.rotation && section.Has("rotation"))
        section.Fail("rotation", "is given and, with rotate, looked for: leave one of them out");
    setting.rotation = section.Number("rotation", RecipeUnit::kDegree, setting.rotation);
    if (!(std::abs(setting.rotation) <= 360.0))
        section.Fail("rotation", "has to lie between -360 and 360 degrees");
    if (section.HasFlag("theta-offset"))
        searched.thetaOffset = section.Flag("theta-offset", false);
    else
        setting.thetaOffset = section.Number("theta-offset", RecipeUnit::kDegree, setting.thetaOffset);
    section.Made("theta-offset", [&] { CheckSetting(setting); });
    if (section.HasFlag("tilt")) {
        searched.tilt = section.Flag("tilt", false);
    } else if (section.Has("tilt")) {
        const std::vector<double> tilt = section.Numbers("tilt", RecipeUnit::kDegree);
        if (tilt.size() != 2 || tilt[0] < 0.0)
            section.Fail("tilt",
                         "has to be true, or a list of the tilt and the azimuth towards which it leans");
        setting.tilt = tilt[0];
        setting.tiltAzimuth = tilt[1];
        section.Made("tilt", [&] { CheckSetting(setting); });
    }
}

std::string ReadDifference(RecipeTable& section) {
    std::string name = section.Text("difference", "");
    if (name.empty()) return name;
    CheckResultName(section, "difference", name);
    section.Made("difference", [&] { CheckDifferenceFile(name); });
    return name;
}

void CompleteBackground(CompareRequest& request) {
    if (!request.background) request.background = UsualBackground(request);
    CheckMeasuredPoints(request);
}

}  // namespace

ScatteringSection ReadScatteringSection(RecipeTable section) {
    ScatteringSection scattering;
    ScatteringRequest& request = scattering.request;
    scattering.method = section.Word<ScatteringMethod>("method");
    if (scattering.method.value_or(kFull) != kFull && section.Has("tolerance"))
        section.Fail("tolerance", "is a setting of the method FULL");
    if (section.Has("imfp")) section.Fail("imfp", "is a key of [image], for every method");
    request.full.tolerance = section.Number("tolerance", RecipeUnit::kNone, request.full.tolerance);
    if (!(request.full.tolerance >= kLeastTolerance && request.full.tolerance <= kLargestTolerance))
        section.Fail("tolerance",
                     fmt::format("has to lie between {:g} and {:g}", kLeastTolerance, kLargestTolerance));
    section.RefuseUnread();
    return scattering;
}

ImageSection ReadImageSection(RecipeTable section) {
    ImageSection image;
    ImageRequest& request = image.request;
    request.map = section.Word("map", request.map);
    request.resolution = section.Number("resolution", RecipeUnit::kDegree, request.resolution);
    if (!(request.resolution >= 0.05 && request.resolution <= 10.0))
        section.Fail("resolution", "has to lie between 0.05 and 10 degrees");
    EmergenceRequest& emergence = request.emergence;
    image.losses = ReadMeanFreePath(section);
    emergence.meanFreePath = Length(section, "mean-free-path");
    if (image.losses && emergence.meanFreePath > 0.0)
        section.Fail("mean-free-path",
                     "damps by exp(-2 r/length), imfp by the losses on the whole way: give one");
    emergence.limits.largest = Length(section, "limit");
    emergence.limits.smallest = Length(section, "lower-limit");
    section.RefuseUnread();
    return image;
}

RunComparison ReadCompareSection(RecipeTable section, const RecipeFolder& place,
                                 const std::string& measuredFile) {
    RunComparison comparison;
    CompareRequest& request = comparison.request;
    const std::string file = section.Text("measured", "");
    request.measured = !measuredFile.empty() ? measuredFile : file.empty() ? file : place.Path(file);
    request.scan.theta = section.Number("measured-theta", RecipeUnit::kDegree);
    request.scan.phi = section.Number("measured-phi", RecipeUnit::kDegree);
    ReadPolarRange(section, request);
    request.background = ReadBackgroundModel(section);
    ReadSetting(section, request);
    request.instrument = ReadInstrument(section);
    request.sigma = section.Word("sigma", request.sigma);
    comparison.difference = ReadDifference(section);
    section.RefuseUnread();
    if (request.measured.empty()) return comparison;
    if (measuredFile.empty())
        section.Made("measured", [&] { CompleteBackground(request); });
    else
        CompleteBackground(request);
    return comparison;
}

}  // namespace qvre
