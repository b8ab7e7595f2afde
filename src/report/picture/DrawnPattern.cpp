#include "report/picture/DrawnPattern.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

#include "foundation/Constants.h"

namespace qvre {

namespace {

/// On rings half a degree apart, as far apart on each.
std::vector<double> HemisphereValues(const DrawnPattern::Function& value) {
    constexpr int kRings = 180;
    std::vector<double> values;
    for (int ring = 0; ring <= kRings; ++ring) {
        const double theta = kPi / 2 * ring / kRings;
        const int steps = std::max(1, static_cast<int>(std::lround(4 * kRings * std::sin(theta))));
        for (int k = 0; k < steps; ++k) {
            const double number = value(theta, kTwoPi * k / steps);
            if (std::isfinite(number)) values.push_back(number);
        }
    }
    return values;
}

}  // namespace

DrawnPattern::DrawnPattern(Function function, double resolution, std::string name)
    : value(std::move(function)), resolution_deg(resolution), title(std::move(name)) {}

DrawnPattern::DrawnPattern(SphereImage image, std::string name)
    : resolution_deg(image.Resolution_deg()), title(std::move(name)) {
    value = [shared = std::make_shared<const SphereImage>(std::move(image))](double theta, double phi) {
        return shared->Value(theta, phi);
    };
}

DrawnPattern::DrawnPattern(ModulationFunction chi, std::string name)
    : resolution_deg(chi.Intensity().Resolution_deg()), title(std::move(name)) {
    value = [shared = std::make_shared<const ModulationFunction>(std::move(chi))](double theta, double phi) {
        return shared->Value(theta, phi);
    };
}

Span ColourRange(const std::vector<DrawnPattern>& patterns, bool symmetric) {
    std::vector<double> values;
    for (const DrawnPattern& pattern : patterns) {
        const std::vector<double> more = HemisphereValues(pattern.value);
        values.insert(values.end(), more.begin(), more.end());
    }
    if (values.empty()) return {-1.0, 1.0};
    if (!symmetric) {
        const auto [low, high] = std::minmax_element(values.begin(), values.end());
        return Widened({*low, *high});
    }
    for (double& value : values) value = std::abs(value);
    std::sort(values.begin(), values.end());
    const double most = values[static_cast<std::size_t>(kShownPart * static_cast<double>(values.size() - 1))];
    const double end = most > 0.0 ? most : values.back();
    return end > 0.0 ? Span{-end, end} : Span{-1.0, 1.0};
}

}  // namespace qvre
