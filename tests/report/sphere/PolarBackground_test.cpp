#include "report/sphere/PolarBackground.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"

namespace {

/// Rings of 16 azimuths with a four-fold modulation over a cubic.
struct Rings {
    explicit Rings(int count) {
        for (int ring = 0; ring < count; ++ring) {
            for (int azimuth = 0; azimuth < 16; ++azimuth) {
                theta.push_back(5.0 + 3.0 * ring);
                intensity.push_back(Cubic(theta.back()) *
                                    (1.0 + 0.3 * std::cos(azimuth * std::acos(-1.0) / 2)));
            }
        }
    }
    static double Cubic(double t) { return 1000.0 - 5.0 * t + 0.2 * t * t - 0.003 * t * t * t; }

    std::vector<double> theta;
    std::vector<double> intensity;
};

TEST(PolarBackground, FindsThePolynomialUnderAModulation) {
    const Rings rings(20);
    for (const char* model : {"3", "12"}) {
        const PolarBackground background(ParseBackgroundModel(model), rings.theta, rings.intensity);
        for (double t = 5.0; t <= 62.0; t += 0.7)
            EXPECT_NEAR(background.At(t), Rings::Cubic(t), 1e-8) << model;
        EXPECT_NEAR(background.Modulation(rings.theta[0], rings.intensity[0]), 0.3, 1e-12);
    }
}

TEST(PolarBackground, MeansAreJoinedByLines) {
    const PolarBackground background(ParseBackgroundModel("mean"), {30.1, 10.0, 30.0, 10.2},
                                     {5.0, 1.0, 7.0, 3.0});
    EXPECT_DOUBLE_EQ(background.At(10.1), 2.0);
    EXPECT_DOUBLE_EQ(background.At(30.05), 6.0);
    EXPECT_DOUBLE_EQ(background.At(20.075), 4.0);
    EXPECT_EQ(background.At(0.0), 2.0);
    EXPECT_EQ(background.At(90.0), 6.0);
    // A ring ends a quarter of a degree above its lowest angle.
    const PolarBackground split(ParseBackgroundModel("mean"), {10.0, 10.2, 10.24, 10.26},
                                {1.0, 1.0, 4.0, 8.0});
    EXPECT_EQ(split.At(10.0), 2.0);
    EXPECT_EQ(split.At(10.26), 8.0);
}

TEST(PolarBackground, TheFitCountsThePointsOfARing) {
    EXPECT_DOUBLE_EQ(PolarBackground({0}, {10.0, 10.0, 10.0, 20.0}, {1.0, 1.0, 1.0, 5.0}).At(15.0), 2.0);
}

TEST(PolarBackground, Refusals) {
    const Rings rings(3);
    EXPECT_EQ(
        ErrorText([&] { PolarBackground(ParseBackgroundModel("3"), rings.theta, rings.intensity); }),
        "A background of degree 3 needs more polar angles than the 3 of the pattern: lower the degree or "
        "widen the polar range");
    EXPECT_EQ(ErrorText([] {
                  PolarBackground({0}, {10.0, 20.0}, {1.0, -2.0}).Modulation(10.0, 1.0);
              }),
              "The background is not positive at the polar angle 10 degrees: choose another background or "
              "another polar range");
    for (const char* text : {"", "13", "-1", "2.5", "3 ", "median"})
        EXPECT_EQ(ErrorText([&] { ParseBackgroundModel(text); }),
                  "A background is the degree of a polynomial from 0 to 12, or mean, not \"" +
                      std::string(text) + "\"");
}

}  // namespace
