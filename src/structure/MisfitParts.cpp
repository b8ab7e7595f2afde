#include "structure/MisfitParts.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <optional>

#include "report/compare/PatternScans.h"
#include "report/sphere/PolarBackground.h"

namespace qvre {

namespace {

using Group = std::pair<std::string, std::vector<std::size_t>>;

std::vector<Group> Belts(const std::vector<double>& theta) {
    constexpr double kWidth = 5.0;  // degrees
    std::map<int, std::vector<std::size_t>> belts;
    for (std::size_t i = 0; i < theta.size(); ++i)
        belts[static_cast<int>(std::floor(theta[i] / kWidth))].push_back(i);
    std::vector<Group> groups;
    groups.reserve(belts.size());
    for (auto& [belt, points] : belts)
        groups.emplace_back(fmt::format("theta {:g} to {:g}", kWidth * belt, kWidth * (belt + 1)),
                            std::move(points));
    return groups;
}

std::vector<Group> GroupsOf(const CompareResult& compared) {
    constexpr std::size_t kMostRings = 24;
    std::vector<Group> groups;
    if (const std::optional<PatternScans> lines = FewScansOf(compared.theta, compared.phi)) {
        for (const PatternScan& scan : lines->scans)
            groups.emplace_back(fmt::format("{} = {:.4g}", lines->isPolar ? "phi" : "theta", scan.angle),
                                scan.point);
        return groups;
    }
    const PolarRings rings(compared.theta);
    if (rings.Count() > kMostRings) return Belts(compared.theta);
    for (const double theta : rings.theta)
        groups.emplace_back(fmt::format("theta = {:.4g}", theta), std::vector<std::size_t>{});
    for (std::size_t i = 0; i < rings.ringOf.size(); ++i) groups[rings.ringOf[i]].second.push_back(i);
    return groups;
}

}  // namespace

std::vector<double> FittedChi(const FittedData& data) {
    std::vector<double> chi = data.compared.chiB;
    for (double& value : chi) value *= data.amplitude;
    return chi;
}

std::vector<MisfitPart> MisfitPartsOf(const FittedData& data) {
    const CompareResult& compared = data.compared;
    const std::vector<double> chi = FittedChi(data);
    std::vector<MisfitPart> parts;
    double all = 0.0;
    for (const auto& [place, points] : GroupsOf(compared)) {
        double difference = 0.0;
        double power = 0.0;
        for (const std::size_t i : points) {
            const double a = compared.chiA[i];
            difference += compared.weight[i] * (a - chi[i]) * (a - chi[i]);
            power += compared.weight[i] * (a * a + chi[i] * chi[i]);
        }
        all += difference;
        parts.push_back({place, points.size(), power > 0.0 ? difference / power : 0.0, difference});
    }
    for (MisfitPart& part : parts) part.share = all > 0.0 ? part.share / all : 0.0;
    std::stable_sort(parts.begin(), parts.end(),
                     [](const MisfitPart& a, const MisfitPart& b) { return a.share > b.share; });
    return parts;
}

}  // namespace qvre
