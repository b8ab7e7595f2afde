#include "scattering/ExpansionLevel.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "foundation/Constants.h"
#include "scattering/SourceKernel.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

/// The new points as rows: theta parameter, and the phi parameters in rising order.
std::map<double, std::vector<double>> RowsOf(const LevelPoints& points) {
    std::map<double, std::vector<double>> rows;
    for (std::size_t i = 0; i < points.thetaIndex.size(); ++i)
        rows[points.t[static_cast<std::size_t>(points.thetaIndex[i])]].push_back(
            points.t[static_cast<std::size_t>(points.phiIndex[i])]);
    for (auto& [theta, phis] : rows) std::sort(phis.begin(), phis.end());
    return rows;
}

std::vector<double> ThetaFactors(double theta, std::int32_t lSize, ZfLmDoubleTable& norm) {
    ZfLmDoubleTable legendre;
    LegendreTable(norm, legendre, lSize, theta);
    for (double& value : legendre.block) value *= std::sin(theta);
    return legendre.block;
}

ExpansionLevel::PhiSet PhiFactors(const std::vector<double>& parameters, std::int32_t lSize,
                                  std::size_t stride) {
    const double norm = 1.0 / std::sqrt(kTwoPi);
    ExpansionLevel::PhiSet set;
    set.cosines.assign(parameters.size() * stride, 0.0);
    set.sines = set.cosines;
    for (std::size_t k = 0; k < parameters.size(); ++k) {
        for (std::int32_t m = 0; m < lSize; ++m) {
            const double angle = m * (kTwoPi * parameters[k]);
            set.cosines[k * stride + static_cast<std::size_t>(m)] = norm * std::cos(angle);
            set.sines[k * stride + static_cast<std::size_t>(m)] = norm * std::sin(angle);
        }
    }
    return set;
}

}  // namespace

namespace qvre {

ExpansionLevel::ExpansionLevel(std::int32_t level, std::int32_t lSize)
    : stride((static_cast<std::size_t>(lSize) + kSourceLanes - 1) / kSourceLanes * kSourceLanes) {
    ZfLmDoubleTable norm;
    std::map<std::vector<double>, std::size_t> setOf;
    for (const auto& [parameter, phis] : RowsOf(GridPoints(level))) {
        const auto [set, isNew] = setOf.emplace(phis, phiSets.size());
        if (isNew) phiSets.push_back(PhiFactors(phis, lSize, stride));
        const double rowTheta = kPi * parameter;
        rows.push_back({points, ThetaFactors(rowTheta, lSize, norm), set->second});
        rowLength = phis.size();
        points += rowLength;
        for (const double t : phis) {
            x.push_back(std::sin(rowTheta) * std::cos(kTwoPi * t));
            y.push_back(std::sin(rowTheta) * std::sin(kTwoPi * t));
            z.push_back(std::cos(rowTheta));
        }
    }
    for (std::vector<double>* axis : {&x, &y, &z}) axis->resize(points + kKernelPadding, 0.0);
}

}  // namespace qvre

LevelPoints GridPoints(std::int32_t level) {
    LevelPoints points;
    const auto add = [&points](std::int32_t a, std::int32_t b) {
        points.thetaIndex.push_back(a);
        points.phiIndex.push_back(b);
    };
    if (level == 0) {
        points.t = {0.0};
        add(0, 0);
    } else if (level % 2 == 1) {
        const std::int32_t c = 1 << ((level - 1) / 2);
        for (std::int32_t i = 0; i < c; ++i) points.t.push_back((2.0 * i + 1.0) / (2.0 * c));
        for (std::int32_t i = 0; i < c; ++i)
            for (std::int32_t j = 0; j < c; ++j) add(i, j);
    } else {
        const std::int32_t c = 1 << ((level - 2) / 2);
        for (std::int32_t i = 0; i < 2 * c; ++i) points.t.push_back(static_cast<double>(i) / (2.0 * c));
        for (std::int32_t i = 1; i < 2 * c; i += 2) {
            for (std::int32_t j = 0; j < 2 * c; j += 2) {
                add(i, j);
                add(j, i);
            }
        }
    }
    return points;
}
