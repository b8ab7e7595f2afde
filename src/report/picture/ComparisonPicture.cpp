#include "report/picture/ComparisonPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>

#include "report/compare/PatternScans.h"
#include "report/picture/DirectionPattern.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/LinePlot.h"

namespace qvre {

namespace {

std::string LabelOfB(const CompareResult& result, const ShownB& b) {
    return fmt::format("b: {}, turned {:.1f}\u00B0, times {:.3g}", result.nameB, result.setting.rotation,
                       b.scale);
}

void DrawAsDiscs(const CompareResult& result, const std::string& path) {
    const ShownB b(result);
    std::vector<double> difference(b.chi.size());
    std::transform(result.chiA.begin(), result.chiA.end(), b.chi.begin(), difference.begin(), std::minus<>());
    const auto disc = [&result](const std::vector<double>& values, const std::string& title) {
        return PatternOfDirections(result.theta, result.phi, values, title);
    };
    DiscPicture plot;
    plot.images.push_back(disc(result.chiA, "a: " + result.nameA));
    plot.images.push_back(disc(b.chi, LabelOfB(result, b)));
    plot.images.push_back(disc(difference, fmt::format("a \u2212 b, R = {:.3f}", b.R)));
    plot.quantity = "\u03C7";
    plot.colours = ColourMap::kDiverging;
    plot.symmetricRange = true;
    DrawDiscs(plot, path);
}

void DrawAsCurves(const CompareResult& result, const PatternScans& lines, const std::string& path) {
    constexpr std::size_t kMostMarkers = 150;
    const auto& [isPolar, scans] = lines;
    const ShownB b(result);
    std::vector<Curve> curves;
    for (const PatternScan& scan : scans) {
        const std::string place =
            scans.size() == 1 ? ""
                              : fmt::format(", {} = {:g}\u00B0", isPolar ? "\u03C6" : "\u03B8", scan.angle);
        curves.push_back(CurveOfScan(scan, result.chiA, "a: " + result.nameA + place));
        curves.push_back(CurveOfScan(scan, b.chi, LabelOfB(result, b) + place));
    }
    LineAxes axes;
    axes.title = fmt::format("R = {:.3f}", b.R);
    axes.xLabel = isPolar ? "polar angle \u03B8 (degrees)" : "azimuth \u03C6 (degrees)";
    if (scans.size() == 1)
        axes.xLabel += fmt::format(", {} = {:g}\u00B0", isPolar ? "\u03C6" : "\u03B8", scans.front().angle);
    axes.yLabel = "\u03C7";
    axes.markers = result.Directions() <= kMostMarkers * scans.size();
    DrawLines(curves, axes, path);
}

}  // namespace

ShownB::ShownB(const CompareResult& result)
    : isScaled(result.agreement.scale > 0.0),
      scale(isScaled ? result.agreement.scale : 1.0),
      R(isScaled ? result.agreement.scaledR : result.agreement.R),
      chi(result.chiB) {
    for (double& value : chi) value *= scale;
}

void DrawComparison(const CompareResult& result, const std::string& path) {
    if (const std::optional<PatternScans> scans = FewScansOf(result.theta, result.phi))
        return DrawAsCurves(result, *scans, path);
    DrawAsDiscs(result, path);
}

}  // namespace qvre
