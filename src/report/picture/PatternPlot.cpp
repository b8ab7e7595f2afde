#include "report/picture/PatternPlot.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <utility>

#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/LinePlot.h"
#include "report/picture/PatternCuts.h"
#include "report/sphere/ImageSum.h"

namespace qvre {

namespace {

/// Of a list with one for all images, or one for each.
const std::string& Belonging(const std::vector<std::string>& paths, std::size_t index) {
    return paths[paths.size() == 1 ? 0 : index];
}

ModulationFunction RatioOf(SphereImage image, const PatternPlot& plot, std::size_t index) {
    const std::string& path = plot.images[index];
    if (plot.background)
        return Naming(path, [&] { return ModulationFunction(std::move(image), *plot.background); });
    const bool isAsymmetry = !plot.partners.empty();
    const std::string& otherPath = Belonging(isAsymmetry ? plot.partners : plot.references, index);
    SphereImage other = Counted(LoadSphereImage(otherPath).image, plot.instrument);
    return Naming(path + " and " + otherPath, [&] {
        return isAsymmetry ? AsymmetryOf(image, other)
                           : ModulationFunction(std::move(image), std::move(other));
    });
}

/// What is drawn of all images, by their files and the request.
enum class Drawn : std::uint8_t { kIntensity, kModulation, kBackgroundModulation, kAsymmetry };

Drawn DrawnOf(const PatternPlot& plot, const std::vector<LoadedImage>& images) {
    const bool isRatio = plot.background || !plot.references.empty() || !plot.partners.empty();
    std::size_t asymmetries = 0;
    for (std::size_t i = 0; i < images.size(); ++i) {
        if (!images[i].IsAsymmetry()) continue;
        ++asymmetries;
        if (isRatio) throw ZfError(plot.images[i] + " is an asymmetry already: draw it as it is");
        if (plot.instrument.ChangesIntensity())
            throw ZfError(
                plot.images[i] +
                " is an asymmetry: averages and refraction act on intensities, so draw the two images "
                "as one with the other for its asymmetry");
    }
    if (asymmetries > 0 && asymmetries < images.size())
        throw ZfError("Asymmetries and intensities need a picture each");
    if (asymmetries > 0 || !plot.partners.empty()) return Drawn::kAsymmetry;
    if (plot.background) return Drawn::kBackgroundModulation;
    return plot.references.empty() ? Drawn::kIntensity : Drawn::kModulation;
}

/// Images of several runs have one name, and the folders tell which is which.
void TellApart(std::vector<LoadedImage>& images, const std::vector<std::string>& paths) {
    std::map<std::string, int> counts;
    for (const LoadedImage& image : images) ++counts[image.title];
    for (std::size_t i = 0; i < images.size(); ++i) {
        const std::string folder = std::filesystem::path(paths[i]).parent_path().filename().string();
        if (counts[images[i].title] > 1 && !folder.empty()) images[i].title = folder + "/" + images[i].title;
    }
}

const char* AxisText(Drawn drawn) {
    switch (drawn) {
        case Drawn::kModulation:
            return "χ = (I − I₀)/I₀";
        case Drawn::kBackgroundModulation:
            return "χ = (I − B)/B";
        case Drawn::kAsymmetry:
            return "(A − B)/(A + B)";
        case Drawn::kIntensity:
            break;
    }
    return "I (arb. units)";
}

const char* QuantityOf(Drawn drawn) {
    return drawn == Drawn::kIntensity ? "I" : drawn == Drawn::kAsymmetry ? "asymmetry" : "chi";
}

/// Takes the pixels of an image into the summary. They are the same for any view.
void Summarise(const std::vector<SpherePixel>& pixels, PatternPlotSummary& summary) {
    for (const SpherePixel& p : pixels) {
        if (p.theta > kPi / 2 + 1e-9 || std::isnan(p.value)) continue;
        summary.values.low = std::min(summary.values.low, p.value);
        summary.values.high = std::max(summary.values.high, p.value);
    }
}

DrawnPattern Prepared(const PatternPlot& plot, LoadedImage loaded, std::size_t index,
                      PatternPlotSummary& summary) {
    const std::string title = index < plot.captions.size() ? plot.captions[index] : loaded.title;
    SphereImage image = Counted(std::move(loaded.image), plot.instrument);
    if (!plot.background && plot.references.empty() && plot.partners.empty()) {
        Summarise(image.Pixels(), summary);
        return {std::move(image), title};
    }
    ModulationFunction ratio = RatioOf(std::move(image), plot, index);
    Summarise(ratio.Pixels(), summary);
    const std::string leftOut = plot.partners.empty() ? LeftOutText(ratio.LeftOut(), ratio.IsByBackground())
                                                      : AsymmetryLeftOutText(ratio);
    if (!leftOut.empty())
        summary.leftOut.push_back(plot.images.size() == 1 ? leftOut : plot.images[index] + ": " + leftOut);
    return {std::move(ratio), title};
}

std::optional<Span> AskedRange(const PatternPlot& plot) {
    if (plot.range.empty()) return std::nullopt;
    return Span{plot.range[0], plot.range[1]};
}

/// What the legend says of one cut; what is common to all lines is left to the axis.
std::string CutLabel(const PatternPlot& plot, const DrawnPattern& pattern, const char* angleName,
                     double angle, std::size_t cuts) {
    const std::string place = fmt::format("{} = {:g}°", angleName, angle);
    if (plot.images.size() == 1) return cuts == 1 ? "" : place;
    return cuts == 1 ? pattern.title : pattern.title + ", " + place;
}

void DrawCuts(const PatternPlot& plot, const std::vector<DrawnPattern>& patterns, Drawn drawn) {
    const bool polar = !plot.polarCuts.empty();
    const std::vector<double>& angles = polar ? plot.polarCuts : plot.azimuthalCuts;
    std::vector<Curve> curves;
    for (const DrawnPattern& pattern : patterns) {
        for (const double angle : angles) {
            curves.push_back(polar ? PolarCut(pattern, angle * kDegree)
                                   : AzimuthalCut(pattern, angle * kDegree));
            curves.back().label = CutLabel(plot, pattern, polar ? "φ" : "θ", angle, angles.size());
        }
    }
    LineAxes axes;
    axes.title = plot.title.empty() && patterns.size() == 1 ? patterns.front().title : plot.title;
    axes.xLabel = polar ? "polar angle θ (degrees)" : "azimuth φ (degrees)";
    if (angles.size() == 1) axes.xLabel += fmt::format(", {} = {:g}°", polar ? "φ" : "θ", angles.front());
    axes.yLabel = AxisText(drawn);
    axes.xRange = polar ? Span{-90.0, 90.0} : Span{0.0, 360.0};
    axes.yRange = AskedRange(plot);
    axes.xStep = polar ? 30.0 : 60.0;
    axes.width = plot.width;
    DrawLines(curves, axes, plot.output);
}

/// Returns the ends of the colours.
Span DrawImages(const PatternPlot& plot, std::vector<DrawnPattern> patterns, Drawn drawn,
                const Span& values) {
    const bool isRatio = drawn != Drawn::kIntensity;
    DiscPicture discs;
    discs.range = AskedRange(plot);
    if (!discs.range) discs.range = isRatio ? ColourRange(patterns, true) : Widened(values);
    discs.images = std::move(patterns);
    discs.title = plot.title;
    discs.quantity = AxisText(drawn);
    discs.view = plot.view;
    discs.colours = plot.colours.value_or(isRatio ? ColourMap::kDiverging : ColourMap::kViridis);
    discs.ringStep_deg = plot.rings;
    discs.panelsPerRow = plot.perRow;
    discs.width = plot.width;
    DrawDiscs(discs, plot.output);
    return *discs.range;
}

}  // namespace

void CheckPatternPlot(const PatternPlot& plot) {
    const auto isBadCount = [&plot](std::size_t count) { return count > 1 && count != plot.images.size(); };
    if (isBadCount(plot.references.size()))
        throw ZfError("give one I0 image for all images, or one for each");
    if (isBadCount(plot.partners.size()))
        throw ZfError("give one image for the asymmetry of all images, or one for each");
    if (!plot.references.empty() && plot.background)
        throw ZfError("I0 and a background exclude each other: either is what I is divided by");
    if (!plot.partners.empty() && (plot.background || !plot.references.empty()))
        throw ZfError("an asymmetry is that of two intensities, without I0 and background");
    if (!Canvas::CanWrite(plot.output))
        throw ZfError("the name of the picture has to end in .png, .svg or .pdf");
    static_cast<void>(Canvas::Scale(plot.output, kColumnWidth, plot.width));  // refuses a width out of range
    if (plot.captions.size() > plot.images.size()) throw ZfError("there are more captions than images");
    CheckInstrument(plot.instrument);
    if (!plot.range.empty() && !(plot.range[0] < plot.range[1]))
        throw ZfError("the first end of the range has to be the lower one");
    if (!plot.polarCuts.empty() && !plot.azimuthalCuts.empty())
        throw ZfError("polar and azimuthal cuts need a picture each");
}

PatternPlotSummary DrawPatternPlot(const PatternPlot& plot) {
    CheckPatternPlot(plot);
    std::vector<LoadedImage> images;
    for (const std::string& path : plot.images) images.push_back(LoadSphereImage(path));
    TellApart(images, plot.images);
    const Drawn drawn = DrawnOf(plot, images);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    PatternPlotSummary summary{QuantityOf(drawn), {kInfinity, -kInfinity}, {}, {}};
    std::vector<DrawnPattern> patterns;
    for (std::size_t i = 0; i < images.size(); ++i)
        patterns.push_back(Prepared(plot, std::move(images[i]), i, summary));
    if (plot.polarCuts.empty() && plot.azimuthalCuts.empty())
        summary.colours = DrawImages(plot, std::move(patterns), drawn, summary.values);
    else
        DrawCuts(plot, patterns, drawn);
    return summary;
}

}  // namespace qvre
