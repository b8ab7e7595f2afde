#include "report/sphere/Modulation.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"

namespace {

constexpr double kInterpolation = 1e-4;

/// The direct wave of an s level under light along (1, 0, 1).
double TiltedS(double x, double /*y*/, double z) {
    return (x + z) * (x + z) / 2;
}

/// With what the neighbours send, which does not vanish with it.
double Scattered(double x, double y, double z) {
    return TiltedS(x, y, z) * (1 + x * y) + 0.04;
}

TEST(ModulationFunction, IsTheRatioBesideTheNodesOfI0) {
    for (const SphereMap map : kMaps) {
        const ModulationFunction chi(Sampled(map, 1.0, Scattered), Sampled(map, 1.0, TiltedS));
        for (double theta = 0.5; theta < 90.0; theta += 1.3) {
            for (double phi = 0.0; phi < 360.0; phi += 7.7) {
                const double i0 = At(TiltedS, theta * kDegree, phi * kDegree);
                if (std::abs(i0 - kFaintPart) < kInterpolation) continue;  // on the border
                const double value = chi.Value(theta * kDegree, phi * kDegree);
                const double expected = At(Scattered, theta * kDegree, phi * kDegree) / i0 - 1;
                EXPECT_EQ(std::isnan(value), i0 < kFaintPart) << theta << " " << phi;
                if (i0 > kFaintPart) {
                    EXPECT_NEAR(value * i0, expected * i0, kInterpolation);
                }
            }
        }
        // Directions within asin(0.1) of the plane across the light, of all: a zone of height 2 times 0.1.
        EXPECT_NEAR(chi.LeftOut(), 0.1, 0.003);
        for (const SpherePixel& p : chi.Pixels()) {
            const double i0 = At(TiltedS, p.theta, p.phi);
            if (std::abs(i0 / kFaintPart - 1) < 0.01) continue;  // on the border
            EXPECT_EQ(std::isnan(p.value), i0 < kFaintPart);
            if (i0 > kFaintPart) {
                EXPECT_NEAR(p.value, At(Scattered, p.theta, p.phi) / i0 - 1, 1e-9);
            }
        }
    }
}

// What is sent into the sample does not make the rest faint.
TEST(ModulationFunction, FaintIsAgainstTheHemisphere) {
    const auto downwards = [](double, double, double z) { return z < 0.0 ? 1000.0 : 1.0; };
    const SphereImage i0 = Sampled(SphereMap::kEquidistantCylindrical, 5.0, downwards);
    EXPECT_EQ(LargestOnHemisphere(i0), 1.0);
    EXPECT_EQ(ModulationFunction(i0, i0).Value(0.5, 1.0), 0.0);
}

TEST(ModulationFunction, DividesByTheMeansOfItsRings) {
    const auto polar = [](double z) { return 0.3 + z * z; };
    const auto modulated = [&](double x, double y, double z) { return polar(z) * (1 + 0.5 * x * y); };
    for (const SphereMap map : kMaps) {
        for (const char* model : {"mean", "6"}) {
            const ModulationFunction chi(Sampled(map, 1.0, modulated), ParseBackgroundModel(model));
            for (double theta = 2.0; theta < 89.0; theta += 3.1) {
                const double s = std::sin(theta * kDegree);
                EXPECT_NEAR(chi.Value(theta * kDegree, kPi / 4), 0.25 * s * s, 1e-3) << model << theta;
            }
            EXPECT_EQ(chi.LeftOut(), 0.0);
        }
    }
}

TEST(ModulationFunction, LeavesOutWhereTheBackgroundIsFaint) {
    const auto surface = [](double, double, double z) { return z * z; };
    const ModulationFunction chi(Sampled(kMaps[0], 1.0, surface), BackgroundModel{});
    EXPECT_NEAR(chi.Value(80 * kDegree, 0.3), 0.0, 5e-3);   // lines between the rings
    EXPECT_TRUE(std::isnan(chi.Value(86 * kDegree, 0.3)));  // cos^2 is 0.005 there
    EXPECT_NEAR(chi.LeftOut(), 0.1, 0.01);
}

TEST(ModulationFunction, SaysWhatIsLeftOut) {
    EXPECT_EQ(LeftOutText(0.0, false), "");
    EXPECT_EQ(
        LeftOutText(0.0312, false),
        "chi left out in 3.1 percent of the directions, where the free atom sends out less than 1 percent "
        "of its maximum");
    EXPECT_EQ(LeftOutText(0.1, true),
              "chi left out in 10 percent of the directions, where the background is below 1 percent of its "
              "maximum");
}

TEST(ModulationFunction, Refusals) {
    const SphereImage image = Sampled(kMaps[1], 2.0, Scattered);
    const SphereImage none = Sampled(kMaps[1], 2.0, [](auto...) { return 0.0; });
    EXPECT_EQ(ErrorText([&] { ModulationFunction(image, none); }),
              "I0 is positive in no direction: take the I0 image of the same run");
    EXPECT_EQ(ErrorText([&] { ModulationFunction(none, BackgroundModel{}); }),
              "The background is positive at no polar angle: the image holds no intensities");
    EXPECT_NE(ErrorText([&] {
                  ModulationFunction(image, Sampled(kMaps[1], 3.0, TiltedS));
              }).find("the same resolution"),
              std::string::npos);
}

}  // namespace
