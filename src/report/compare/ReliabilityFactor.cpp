#include "report/compare/ReliabilityFactor.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

void RefuseConstant(const std::vector<double>& values, const std::string& which) {
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    // What is left of a smooth pattern when its background is taken away is rounding, some 1e-16.
    constexpr double kRounding = 1e-12;
    if (*high - *low > kRounding * std::max({1.0, std::abs(*low), std::abs(*high)})) return;
    throw ZfError("The modulation of pattern " + which + " is constant over the range: nothing to compare");
}

double Sum(const std::vector<double>& w, const std::vector<double>& a, const std::vector<double>& b,
           double meanA, double meanB) {
    double sum = 0.0;
    for (std::size_t i = 0; i < w.size(); ++i) sum += w[i] * (a[i] - meanA) * (b[i] - meanB);
    return sum;
}

double Mean(const std::vector<double>& w, const std::vector<double>& a) {
    double sum = 0.0;
    double weights = 0.0;
    for (std::size_t i = 0; i < w.size(); ++i) {
        sum += w[i] * a[i];
        weights += w[i];
    }
    return sum / weights;
}

double ReliabilityFactor(const std::vector<double>& w, const std::vector<double>& a,
                         const std::vector<double>& b, double scale) {
    double difference = 0.0;
    double size = 0.0;
    for (std::size_t i = 0; i < w.size(); ++i) {
        const double scaled = scale * b[i];
        difference += w[i] * (a[i] - scaled) * (a[i] - scaled);
        size += w[i] * (a[i] * a[i] + scaled * scaled);
    }
    return difference / size;
}

double AbsoluteFactor(const std::vector<double>& w, const std::vector<double>& a,
                      const std::vector<double>& b) {
    double difference = 0.0;
    double size = 0.0;
    for (std::size_t i = 0; i < w.size(); ++i) {
        difference += w[i] * std::abs(a[i] - b[i]);
        size += w[i] * (std::abs(a[i]) + std::abs(b[i]));
    }
    return difference / size;
}

}  // namespace

Agreement CompareModulations(const std::vector<double>& a, const std::vector<double>& b,
                             const std::vector<double>& weight) {
    if (weight.size() < 2)
        throw ZfError("The patterns have fewer than 2 directions in common: widen the polar range");
    RefuseConstant(a, "a");
    RefuseConstant(b, "b");
    const double meanA = Mean(weight, a);
    const double meanB = Mean(weight, b);
    Agreement result;
    if (Sum(weight, a, b, 0.0, 0.0) > 0.0)
        result.scale = std::sqrt(Sum(weight, a, a, 0.0, 0.0) / Sum(weight, b, b, 0.0, 0.0));
    result.R = ReliabilityFactor(weight, a, b, 1.0);
    result.absoluteR = AbsoluteFactor(weight, a, b);
    result.scaledR = ReliabilityFactor(weight, a, b, result.scale);
    result.correlation = Sum(weight, a, b, meanA, meanB) /
                         std::sqrt(Sum(weight, a, a, meanA, meanA) * Sum(weight, b, b, meanB, meanB));
    return result;
}

}  // namespace qvre
