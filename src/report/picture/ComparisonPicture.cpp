#include "report/picture/ComparisonPicture.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <optional>

#include "foundation/Constants.h"
#include "report/compare/PatternScans.h"
#include "report/picture/DiscPicture.h"
#include "report/picture/DrawnPattern.h"
#include "report/picture/LinePlot.h"
#include "report/sphere/PolarBackground.h"

namespace qvre {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

std::vector<double> Gaps(const std::vector<double>& rising) {
    std::vector<double> gaps(rising.size());
    std::adjacent_difference(rising.begin(), rising.end(), gaps.begin());
    gaps.erase(gaps.begin());
    return gaps;
}

std::string LabelOfB(const CompareResult& result, const ShownB& b) {
    return fmt::format("b: {}, turned {:.1f}\u00B0, times {:.3g}", result.nameB, result.setting.rotation,
                       b.scale);
}

// Discs

/// Half the sides of the cell of the sphere that a direction stands for, degrees.
struct Cell {
    double theta = 0.0;
    double phi = 0.0;
};

/// Rings share their belt; where most directions have polar angles of their own, they share the belt of all.
std::vector<Cell> CellsOf(const CompareResult& result) {
    constexpr double kRounding = 1.02;  // neighbours touch
    const PolarRings rings(result.theta);
    const auto points = static_cast<double>(result.Directions());
    const bool hasRings = points >= 3.0 * static_cast<double>(rings.Count()) && rings.Count() > 1;
    const double belt =
        kTwoPi * (std::cos(rings.theta.front() * kDegree) - std::cos(rings.theta.back() * kDegree));
    const double half =
        kRounding / 2.0 * (hasRings ? Median(Gaps(rings.theta)) : 1.5 * std::sqrt(belt / points) / kDegree);

    std::vector<std::vector<double>> azimuths(rings.Count());
    for (std::size_t i = 0; i < rings.ringOf.size(); ++i)
        azimuths[rings.ringOf[i]].push_back(result.phi[i] - 360.0 * std::floor(result.phi[i] / 360.0));
    std::vector<Cell> ofRing;
    for (std::size_t ring = 0; ring < rings.Count(); ++ring) {
        std::vector<double>& phi = azimuths[ring];
        std::sort(phi.begin(), phi.end());
        // Not much wider than high: a lone direction says nothing of those far off on its ring.
        const double widest =
            std::min(180.0, 2.0 * half / std::sin(std::max(rings.theta[ring], 0.5) * kDegree));
        const double gap = phi.size() > 1 && hasRings ? kRounding / 2.0 * Median(Gaps(phi)) : widest;
        ofRing.push_back({half, rings.theta[ring] < half ? 180.0 : std::min(gap, widest)});
    }
    std::vector<Cell> cells;
    for (const std::size_t ring : rings.ringOf) cells.push_back(ofRing[ring]);
    return cells;
}

/// Values in the cells of directions, on an azimuthal map of two pixels a degree. A pixel takes the mean of
/// the directions around it, weighed with a Gaussian of the width of their cells.
class CellMap {
public:
    CellMap(const CompareResult& result, const std::vector<double>& values);

    /// Radians; NaN outside of all cells.
    double Value(double theta, double phi) const {
        const double radius = theta / kDegree * kPixels;
        const auto column = std::lround(kCentre + radius * std::cos(phi));
        const auto row = std::lround(kCentre + radius * std::sin(phi));
        if (std::min(column, row) < 0 || std::max(column, row) >= kSide) return kNothing;
        return mean_[static_cast<std::size_t>(row * kSide + column)];
    }

private:
    static constexpr std::int32_t kPixels = 4;  // a degree
    static constexpr std::int32_t kCentre = 91 * kPixels;
    static constexpr std::int32_t kSide = 2 * kCentre + 1;

    std::vector<double> mean_;
};

CellMap::CellMap(const CompareResult& result, const std::vector<double>& values)
    : mean_(std::size_t{kSide} * kSide) {
    std::vector<double> weights(mean_.size());
    std::vector<char> isInside(mean_.size());
    const std::vector<Cell> cells = CellsOf(result);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (result.theta[i] > 90.0) continue;
        const double radius = result.theta[i] * kPixels;
        const double phi = Radians(result.phi[i]);
        const double x = kCentre + radius * std::cos(phi);
        const double y = kCentre + radius * std::sin(phi);
        const double sigma = kPixels * std::clamp(0.9 * cells[i].theta, 0.5, 5.0);
        const double across = radius * std::min(1.0, cells[i].phi * kDegree);
        const auto reach =
            static_cast<std::int32_t>(std::ceil(std::max({2.0 * sigma, cells[i].theta * kPixels, across})));
        const auto column = static_cast<std::int32_t>(std::lround(x));
        const auto row = static_cast<std::int32_t>(std::lround(y));
        for (std::int32_t r = std::max(0, row - reach); r <= std::min(kSide - 1, row + reach); ++r) {
            for (std::int32_t c = std::max(0, column - reach); c <= std::min(kSide - 1, column + reach);
                 ++c) {
                const double distance = std::hypot(c - x, r - y) / sigma;
                const double weight = std::exp(-distance * distance / 2.0);
                const std::size_t pixel = static_cast<std::size_t>(r) * kSide + static_cast<std::size_t>(c);
                mean_[pixel] += weight * values[i];
                weights[pixel] += weight;
                const double theta = std::hypot(c - kCentre, r - kCentre) / kPixels;
                const double turn = std::remainder(std::atan2(r - kCentre, c - kCentre) - phi, kTwoPi);
                if (std::abs(theta - result.theta[i]) <= cells[i].theta &&
                    (std::abs(turn) <= cells[i].phi * kDegree || theta == 0.0))
                    isInside[pixel] = 1;
            }
        }
    }
    for (std::size_t pixel = 0; pixel < mean_.size(); ++pixel)
        mean_[pixel] = isInside[pixel] ? mean_[pixel] / weights[pixel] : kNothing;
}

DrawnPattern Disc(const CompareResult& result, const std::vector<double>& values, const std::string& title) {
    const auto map = std::make_shared<const CellMap>(result, values);
    return {[map](double theta, double phi) { return map->Value(theta, phi); }, 1.0, title};
}

void DrawAsDiscs(const CompareResult& result, const std::string& path) {
    const ShownB b(result);
    std::vector<double> difference(b.chi.size());
    std::transform(result.chiA.begin(), result.chiA.end(), b.chi.begin(), difference.begin(), std::minus<>());
    DiscPicture plot;
    plot.images.push_back(Disc(result, result.chiA, "a: " + result.nameA));
    plot.images.push_back(Disc(result, b.chi, LabelOfB(result, b)));
    plot.images.push_back(Disc(result, difference, fmt::format("a \u2212 b, R = {:.3f}", b.R)));
    plot.quantity = "\u03C7";
    plot.colours = ColourMap::kDiverging;
    plot.symmetricRange = true;
    DrawDiscs(plot, path);
}

// Curves

/// Lines end where directions are missing.
Curve CurveOf(const PatternScan& scan, const std::vector<double>& values, const std::string& label) {
    constexpr double kMissing = 2.5;  // usual steps
    Curve curve{label, {}, {}};
    const double step = scan.along.size() > 1 ? Median(Gaps(scan.along)) : 0.0;
    for (std::size_t i = 0; i < scan.along.size(); ++i) {
        if (i > 0 && scan.along[i] - scan.along[i - 1] > kMissing * step) {
            curve.x.push_back(scan.along[i]);
            curve.y.push_back(kNothing);
        }
        curve.x.push_back(scan.along[i]);
        curve.y.push_back(values[scan.point[i]]);
    }
    return curve;
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
        curves.push_back(CurveOf(scan, result.chiA, "a: " + result.nameA + place));
        curves.push_back(CurveOf(scan, b.chi, LabelOfB(result, b) + place));
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
