#include "report/picture/PatternPlot.h"

#include <fmt/format.h>

#include <utility>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/picture/Canvas.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/LinePlot.h"
#include "report/picture/PatternCuts.h"
#include "report/sphere/SphereOperations.h"

namespace qvre {

namespace {

/// In the order of the experiment: the surface, the sample's domains, the analyser.
SphereImage Measured(SphereImage image, const PatternPlot& plot) {
    if (plot.innerPotential) image = Refracted(image, plot.energy, *plot.innerPotential);
    if (plot.fold > 1 || plot.mirror) {
        const auto mirror =
            plot.mirror ? std::optional<double>(*plot.mirror * kDegree) : std::optional<double>();
        image = SymmetryAverage(image, plot.fold, mirror);
    }
    if (plot.acceptance > 0.0) image = AcceptanceAverage(image, plot.acceptance * kDegree);
    return image;
}

LoadedImage Prepared(const PatternPlot& plot, std::size_t index) {
    LoadedImage loaded = LoadSphereImage(plot.images[index]);
    if (index < plot.captions.size()) loaded.title = plot.captions[index];
    loaded.image = Measured(std::move(loaded.image), plot);
    if (plot.references.empty()) return loaded;
    const std::string& path = plot.references[plot.references.size() == 1 ? 0 : index];
    const SphereImage reference = Measured(LoadSphereImage(path).image, plot);
    try {
        loaded.image = Modulation(loaded.image, reference);
    } catch (const ZfError& error) {
        throw ZfError(fmt::format("{} and {}: {}", plot.images[index], path, error.message));
    }
    return loaded;
}

std::string Quantity(const PatternPlot& plot) {
    return plot.references.empty() ? "I (arb. units)" : "χ = (I − I₀)/I₀";
}

std::optional<Span> AskedRange(const PatternPlot& plot) {
    if (plot.range.empty()) return std::nullopt;
    return Span{plot.range[0], plot.range[1]};
}

/// What the legend says of one cut; what is common to all lines is left to the axis.
std::string CutLabel(const PatternPlot& plot, const LoadedImage& loaded, const char* angleName, double angle,
                     std::size_t cuts) {
    const std::string place = fmt::format("{} = {:g}°", angleName, angle);
    if (plot.images.size() == 1) return cuts == 1 ? "" : place;
    return cuts == 1 ? loaded.title : loaded.title + ", " + place;
}

void DrawCuts(const PatternPlot& plot, const std::vector<LoadedImage>& images) {
    const bool polar = !plot.polarCuts.empty();
    const std::vector<double>& angles = polar ? plot.polarCuts : plot.azimuthalCuts;
    std::vector<Curve> curves;
    for (const LoadedImage& loaded : images) {
        for (const double angle : angles) {
            curves.push_back(polar ? PolarCut(loaded.image, angle * kDegree)
                                   : AzimuthalCut(loaded.image, angle * kDegree));
            curves.back().label = CutLabel(plot, loaded, polar ? "φ" : "θ", angle, angles.size());
        }
    }
    LineAxes axes;
    axes.title = plot.title.empty() && images.size() == 1 ? images.front().title : plot.title;
    axes.xLabel = polar ? "polar angle θ (degrees)" : "azimuth φ (degrees)";
    if (angles.size() == 1) axes.xLabel += fmt::format(", {} = {:g}°", polar ? "φ" : "θ", angles.front());
    axes.yLabel = Quantity(plot);
    axes.xRange = polar ? Span{-90.0, 90.0} : Span{0.0, 360.0};
    axes.yRange = AskedRange(plot);
    axes.xStep = polar ? 30.0 : 60.0;
    axes.width = plot.width;
    DrawLines(curves, axes, plot.output);
}

Span DrawImages(const PatternPlot& plot, std::vector<LoadedImage> images) {
    const bool modulation = !plot.references.empty();
    DiscPicture discs;
    discs.images = std::move(images);
    discs.title = plot.title;
    discs.quantity = Quantity(plot);
    discs.view = plot.view;
    discs.colours = plot.colours.value_or(modulation ? ColourMap::kDiverging : ColourMap::kViridis);
    discs.range = AskedRange(plot);
    discs.symmetricRange = modulation;
    discs.ringStep_deg = plot.rings;
    discs.panelsPerRow = plot.perRow;
    discs.width = plot.width;
    const Span range = ColourRange(discs.images, false);
    DrawDiscs(discs, plot.output);
    return range;
}

}  // namespace

void CheckPatternPlot(const PatternPlot& plot) {
    const std::size_t count = plot.references.size();
    if (count > 1 && count != plot.images.size())
        throw ZfError("give one I0 image for all images, or one for each");
    if (!Canvas::CanWrite(plot.output))
        throw ZfError("the name of the picture has to end in .png, .svg or .pdf");
    static_cast<void>(Canvas::Scale(plot.output, kColumnWidth, plot.width));  // refuses a width out of range
    if (plot.captions.size() > plot.images.size()) throw ZfError("there are more captions than images");
    if (plot.innerPotential && plot.energy == 0.0)
        throw ZfError(
            "the image does not tell its energy: beside the inner potential give the energy of the "
            "calculation");
    if (plot.energy != 0.0 && !plot.innerPotential)
        throw ZfError("the energy is used for refraction only: give the inner potential too");
    if (!plot.range.empty() && !(plot.range[0] < plot.range[1]))
        throw ZfError("the first end of the range has to be the lower one");
    if (!plot.polarCuts.empty() && !plot.azimuthalCuts.empty())
        throw ZfError("polar and azimuthal cuts need a picture each");
}

std::optional<Span> DrawPatternPlot(const PatternPlot& plot) {
    CheckPatternPlot(plot);
    std::vector<LoadedImage> images;
    for (std::size_t i = 0; i < plot.images.size(); ++i) images.push_back(Prepared(plot, i));
    if (plot.polarCuts.empty() && plot.azimuthalCuts.empty()) return DrawImages(plot, std::move(images));
    DrawCuts(plot, images);
    return std::nullopt;
}

}  // namespace qvre
