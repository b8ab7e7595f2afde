#include "report/compare/LeastR.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"

namespace {

// R = 0.2 + 3 (x - 1.13)^2 on values that are not evenly spaced.
TEST(LeastR, OfAParabolaIsItsMinimum) {
    ScannedR scan{{{0.8, 1.0, 1.3, 1.7}}, {}};
    for (const double x : scan.axes[0]) scan.R.push_back(0.2 + 3.0 * (x - 1.13) * (x - 1.13));
    const LeastR least = FindLeastR(scan, 50.0);
    EXPECT_EQ(least.point, std::vector<double>{1.0});
    ASSERT_EQ(least.at.size(), 1U);
    EXPECT_NEAR(least.at[0], 1.13, 1e-12);
    EXPECT_NEAR(least.R, 0.2, 1e-12);
    // R rises from 0.2 to 0.24 at the R level of 50 data.
    EXPECT_NEAR(3.0 * least.error[0] * least.error[0], 0.04, 1e-12);
}

// A turned bowl: the error of each number is the reach of the ellipse along it, with the other one free.
TEST(LeastR, OfABowlIsItsMinimumAndItsErrorsAreThoseOfTheEllipse) {
    const auto R = [](double x, double y) {
        const double u = x - 3.61;
        const double v = y - 300.0;
        return 0.1 + 4.0 * u * u + 0.03 * u * v + 1e-4 * v * v;
    };
    ScannedR scan{{{3.4, 3.55, 3.7, 3.8}, {200.0, 260.0, 330.0, 400.0}}, {}};
    for (const double x : scan.axes[0])
        for (const double y : scan.axes[1]) scan.R.push_back(R(x, y));
    const LeastR least = FindLeastR(scan, 200.0);
    ASSERT_EQ(least.at.size(), 2U) << least.whyNone;
    EXPECT_NEAR(least.at[0], 3.61, 1e-9);
    EXPECT_NEAR(least.at[1], 300.0, 1e-7);
    EXPECT_NEAR(least.R, 0.1, 1e-10);
    double reachX = 0.0;
    double reachY = 0.0;
    for (std::size_t i = 0; i < least.levelX.size(); ++i) {
        EXPECT_NEAR(R(least.levelX[i], least.levelY[i]), 0.11, 1e-9);
        reachX = std::max(reachX, least.levelX[i] - least.at[0]);
        reachY = std::max(reachY, least.levelY[i] - least.at[1]);
    }
    EXPECT_NEAR(least.error[0] / reachX, 1.0, 1e-3);
    EXPECT_NEAR(least.error[1] / reachY, 1.0, 1e-3);
}

TEST(LeastR, IsNotMadeUpWhereTheScanDoesNotHoldIt) {
    const LeastR end = FindLeastR({{{1.0, 2.0, 3.0}}, {0.1, 0.2, 0.3}}, 10.0);
    EXPECT_EQ(end.point, std::vector<double>{1.0});
    EXPECT_TRUE(end.error.empty());
    EXPECT_EQ(end.whyNone, "it lies at the end of the scan: scan further");
    // The parabola of a sharp dip goes below 0.
    const LeastR sharp = FindLeastR({{{1.0, 2.0, 3.0}}, {0.9, 1e-9, 0.1}}, 10.0);
    EXPECT_TRUE(sharp.error.empty());
    EXPECT_EQ(sharp.R, 1e-9);
    EXPECT_TRUE(FindLeastR({{{1.0, 2.0, 3.0}}, {0.2, 0.2, 0.2}}, 10.0).error.empty());
    // A saddle: less along one diagonal.
    const LeastR saddle = FindLeastR(
        {{{1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}}, {0.3, 0.2, 0.11, 0.2, 0.1, 0.2, 0.11, 0.2, 0.3}}, 10.0);
    EXPECT_TRUE(saddle.at.empty());
}

TEST(LeastR, PointsOfAScanMakeAGridInAnyOrder) {
    const ScannedR scan = GridOf({{2.0, 10.0}, {1.0, 20.0}, {1.0, 10.0}, {2.0, 20.0}}, {3.0, 2.0, 1.0, 4.0});
    EXPECT_EQ(scan.axes, (std::vector<std::vector<double>>{{1.0, 2.0}, {10.0, 20.0}}));
    EXPECT_EQ(scan.R, (std::vector<double>{1.0, 2.0, 3.0, 4.0}));
}

// (L + 1)^2 numbers on the sphere, half of them on the hemisphere, and no more than there are points.
TEST(LeastR, IndependentDirectionsAreThoseOfTheAngularMomenta) {
    std::vector<double> theta;
    std::vector<double> phi;
    for (double t = 0.25; t < 90.0; t += 0.5) {
        const double step = 0.5 / std::sin(t * M_PI / 180.0);
        for (double p = 0.0; p < 360.0; p += step) {
            theta.push_back(t);
            phi.push_back(p);
        }
    }
    for (const double L : {40.0, 60.0, 80.0})
        EXPECT_NEAR(IndependentDirections(theta, phi, L) / ((L + 1) * (L + 1) / 2), 1.0, 0.08) << L;
    EXPECT_EQ(IndependentDirections({10.0, 10.0, 40.0, 40.0}, {0.0, 90.0, -10.0, 350.0}, 100.0), 3.0);
}

}  // namespace
