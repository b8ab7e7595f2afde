#include "report/compare/PatternScans.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "report/sphere/PolarBackground.h"

namespace qvre {

namespace {

/// `common` and `along` of each direction, degrees.
std::vector<PatternScan> ScansOf(const std::vector<double>& common, const std::vector<double>& along) {
    const PolarRings lines(common);
    std::vector<PatternScan> scans(lines.Count());
    std::vector<std::size_t> order(along.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t i, std::size_t j) { return along[i] < along[j]; });
    for (const std::size_t i : order) {
        PatternScan& scan = scans[lines.ringOf[i]];
        scan.angle = lines.theta[lines.ringOf[i]];
        scan.along.push_back(along[i]);
        scan.point.push_back(i);
    }
    return scans;
}

std::vector<PatternScan> PolarScansOf(const std::vector<double>& theta, const std::vector<double>& phi) {
    constexpr double kOneLine = 0.25;  // degrees
    std::vector<double> plane;
    std::vector<double> along;
    for (std::size_t i = 0; i < theta.size(); ++i) {
        // On a plane through the normal the azimuths phi and phi + 180 have polar angles of opposite sign.
        const double turns = std::floor((phi[i] + kOneLine) / 180.0);
        plane.push_back(phi[i] - 180.0 * turns);
        along.push_back(std::remainder(turns, 2.0) == 0.0 ? theta[i] : -theta[i]);
    }
    return ScansOf(plane, along);
}

bool AreFew(const std::vector<PatternScan>& scans, std::size_t points) {
    constexpr std::size_t kMostScans = 3;
    return scans.size() <= kMostScans && points >= 4 * scans.size();
}

}  // namespace

std::optional<PatternScans> FewScansOf(const std::vector<double>& theta, const std::vector<double>& phi) {
    std::vector<PatternScan> azimuthal = ScansOf(theta, phi);
    if (AreFew(azimuthal, theta.size())) return PatternScans{false, std::move(azimuthal)};
    std::vector<PatternScan> polar = PolarScansOf(theta, phi);
    if (AreFew(polar, theta.size())) return PatternScans{true, std::move(polar)};
    return std::nullopt;
}

}  // namespace qvre
