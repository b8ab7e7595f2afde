#include "report/picture/DirectionPattern.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <numeric>

#include "foundation/Constants.h"
#include "report/sphere/PolarBackground.h"

namespace qvre {

namespace {

constexpr double kNothing = std::numeric_limits<double>::quiet_NaN();

/// Degrees.
struct Directions {
    const std::vector<double>& theta;
    const std::vector<double>& phi;
};

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

/// Half the sides of the cell of the sphere that a direction stands for, degrees.
struct Cell {
    double theta = 0.0;
    double phi = 0.0;
};

/// Rings share their belt; where most directions have polar angles of their own, they share the belt of all.
std::vector<Cell> CellsOf(const Directions& directions) {
    constexpr double kRounding = 1.02;  // neighbours touch
    const PolarRings rings(directions.theta);
    const auto points = static_cast<double>(directions.theta.size());
    const bool hasRings = points >= 3.0 * static_cast<double>(rings.Count()) && rings.Count() > 1;
    const double belt =
        kTwoPi * (std::cos(rings.theta.front() * kDegree) - std::cos(rings.theta.back() * kDegree));
    const double half =
        kRounding / 2.0 * (hasRings ? Median(Gaps(rings.theta)) : 1.5 * std::sqrt(belt / points) / kDegree);

    std::vector<std::vector<double>> azimuths(rings.Count());
    for (std::size_t i = 0; i < rings.ringOf.size(); ++i)
        azimuths[rings.ringOf[i]].push_back(directions.phi[i] -
                                            360.0 * std::floor(directions.phi[i] / 360.0));
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
    CellMap(const Directions& directions, const std::vector<double>& values);

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

CellMap::CellMap(const Directions& directions, const std::vector<double>& values)
    : mean_(std::size_t{kSide} * kSide) {
    std::vector<double> weights(mean_.size());
    std::vector<char> isInside(mean_.size());
    const std::vector<Cell> cells = CellsOf(directions);
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (directions.theta[i] > 90.0) continue;
        const double radius = directions.theta[i] * kPixels;
        const double phi = Radians(directions.phi[i]);
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
                if (std::abs(theta - directions.theta[i]) <= cells[i].theta &&
                    (std::abs(turn) <= cells[i].phi * kDegree || theta == 0.0))
                    isInside[pixel] = 1;
            }
        }
    }
    for (std::size_t pixel = 0; pixel < mean_.size(); ++pixel)
        mean_[pixel] = isInside[pixel] ? mean_[pixel] / weights[pixel] : kNothing;
}

}  // namespace

DrawnPattern PatternOfDirections(const std::vector<double>& theta, const std::vector<double>& phi,
                                 const std::vector<double>& values, const std::string& title) {
    const auto map = std::make_shared<const CellMap>(Directions{theta, phi}, values);
    return {[map](double polar, double azimuth) { return map->Value(polar, azimuth); }, 1.0, title};
}

Curve CurveOfScan(const PatternScan& scan, const std::vector<double>& values, const std::string& label) {
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

}  // namespace qvre
