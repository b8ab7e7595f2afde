#include "fit/SobolPoints.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "fit/RandomNumbers.h"

using namespace qvre;

namespace {

/// The square of the L2 star discrepancy (T. T. Warnock 1972).
double Discrepancy(const std::vector<std::vector<double>>& points) {
    const auto count = static_cast<double>(points.size());
    const std::size_t n = points.front().size();
    double sum = std::pow(3.0, -static_cast<double>(n));
    for (const auto& x : points) {
        double product = 1.0;
        for (const double xi : x) product *= (1.0 - xi * xi) / 2.0;
        sum -= 2.0 / count * product;
        for (const auto& y : points) {
            double both = 1.0;
            for (std::size_t i = 0; i < n; ++i) both *= 1.0 - std::max(x[i], y[i]);
            sum += both / (count * count);
        }
    }
    return sum;
}

TEST(SobolPoints, FillTheCubeMoreEvenlyThanRandomOnes) {
    for (const std::uint64_t seed : {0, 1, 2, 3}) {
        RandomNumbers random{seed};
        std::vector<std::vector<double>> scattered(256, std::vector<double>(4));
        for (auto& point : scattered)
            for (double& coordinate : point) coordinate = random.Uniform();
        const auto even = SobolPoints(4, 256, seed);
        EXPECT_LT(Discrepancy(even), 0.3 * Discrepancy(scattered)) << seed;
    }
    EXPECT_NE(SobolPoints(4, 256, 1), SobolPoints(4, 256, 2));
}

// Mean, variance, and the share within one standard deviation, each within four of their standard errors.
TEST(RandomNumbers, AreNormal) {
    RandomNumbers random{7};
    constexpr int kCount = 100000;
    double sum = 0.0;
    double squares = 0.0;
    int within = 0;
    for (int i = 0; i < kCount; ++i) {
        const double x = random.Normal();
        sum += x;
        squares += x * x;
        within += std::abs(x) < 1.0 ? 1 : 0;
    }
    EXPECT_NEAR(sum / kCount, 0.0, 4.0 / std::sqrt(kCount));
    EXPECT_NEAR(squares / kCount, 1.0, 4.0 * std::sqrt(2.0 / kCount));
    EXPECT_NEAR(double(within) / kCount, 0.682689, 4.0 * 0.4655 / std::sqrt(kCount));
    // The first number of the published generator for the seed 1234567.
    EXPECT_EQ(RandomNumbers{1234567}.Next(), 6457827717110365317U);
}

}  // namespace
