#include "recipe/RecipeSettings.h"

#include <fmt/format.h>

#include <vector>

#include "recipe/RecipePictures.h"
#include "report/compare/MeasuredPattern.h"
#include "report/picture/ComparisonOutput.h"

namespace qvre {

namespace {

constexpr double kAngstrom_m = 1e-10;

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

std::string ReadDifference(RecipeTable& section) {
    std::string name = section.Text("difference", "");
    if (name.empty()) return name;
    CheckResultName(section, "difference", name);
    section.Made("difference", [&] { CheckDifferenceFile(name); });
    return name;
}

/// A cubic serves points that lie on no rings as well, where means over the azimuth would take the pattern
/// away.
void CompleteBackground(CompareRequest& request) {
    constexpr int kUsualDegree = 3;
    if (!request.background && LoadMeasuredPattern(request.measured).chi.empty())
        request.background = BackgroundModel{kUsualDegree};
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
    ReadPolarRange(section, request);
    request.background = ReadBackgroundModel(section);
    request.rotate = section.Flag("rotate", request.rotate);
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
