#include "report/compare/PatternComparison.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"

namespace {

constexpr double kPixel = 3.6;  // degrees

/// A smooth intensity with a modulation of the given fold, turned by `turn` degrees, over an I0 that falls
/// with theta.
struct Model {
    int fold = 1;
    double turn = 0.0;

    static double I0(double z) { return 2.0 + z; }
    double Chi(double theta, double phi) const {
        const double s = std::sin(theta);
        return 0.4 * std::pow(s, 4) * std::cos(fold * (phi - turn * kDegree)) +
               0.2 * s * s * std::cos(6 * theta);
    }
    double operator()(double x, double y, double z) const {
        return I0(z) * (1.0 + Chi(std::acos(z), std::atan2(y, x)));
    }
};

class PatternComparison : public testing::Test {
protected:
    ImageFiles Write(const std::string& name, SphereMap map, const Model& model) {
        WriteImageFile(folder_.Path(name), Sampled(map, kPixel, model));
        WriteImageFile(folder_.Path("i0_" + name),
                       Sampled(map, kPixel, [](double, double, double z) { return Model::I0(z); }));
        return {folder_.Path(name), folder_.Path("i0_" + name)};
    }

    CompareRequest Pair(const Model& a, SphereMap mapOfA, const Model& b, SphereMap mapOfB) {
        CompareRequest request;
        request.first = Write("a.xml_img", mapOfA, a);
        request.second = Write("b.xml_img", mapOfB, b);
        request.searched.rotation = true;
        return request;
    }

    TempFolder folder_;
};

TEST_F(PatternComparison, AnImageEqualsItself) {
    for (const SphereMap map : kMaps) {
        CompareRequest request = Pair({3, 10.0}, map, {3, 10.0}, map);
        CompareResult result = ComparePatterns(request);
        EXPECT_EQ(result.agreement.R, 0.0);
        EXPECT_EQ(result.setting.rotation, 0.0);
        EXPECT_DOUBLE_EQ(result.agreement.scale, 1.0);
        EXPECT_DOUBLE_EQ(result.agreement.correlation, 1.0);
        // The directions fill the hemisphere evenly: the mean of cos(theta) is 1/2.
        double weights = 0.0;
        double heights = 0.0;
        for (std::size_t i = 0; i < result.theta.size(); ++i) {
            weights += result.weight[i];
            heights += result.weight[i] * std::cos(result.theta[i] * kDegree);
        }
        EXPECT_NEAR(heights / weights, 0.5, 1e-3);
    }
}

// The rotation brings b over a; of the three that a three-fold pattern has it is the smallest.
TEST_F(PatternComparison, FindsTheRotation) {
    constexpr double kAngle = 0.02;  // degrees; interpolation between pixels
    for (const SphereMap map : kMaps) {
        for (const auto& [fold, turn, found] : {std::tuple{1, 133.3, -133.3},
                                                {1, -179.7, 179.7},
                                                {1, 179.7, -179.7},
                                                {3, 40.25, -40.25},
                                                {3, 100.0, 20.0}}) {
            const CompareResult result = ComparePatterns(Pair({fold, 0.0}, map, {fold, turn}, kMaps[0]));
            EXPECT_NEAR(result.setting.rotation, found, kAngle) << fold << ' ' << turn;
            EXPECT_LT(result.agreement.R, 1e-4);
        }
    }
}

// Measured counts: the model turned, under the cubic transmission of an analyser. Ring means take away the
// part of chi that does not depend on the azimuth, so that both patterns have to lose it.
TEST_F(PatternComparison, MeasurementWithBackground) {
    CompareRequest request;
    request.second = {Write("b.xml_img", kMaps[0], {3, 0.0}).image, ""};
    std::string table = "theta,phi,counts\n";
    const Model measured{3, -25.0};
    for (int theta = 20; theta <= 80; theta += 3) {
        for (int phi = 0; phi < 360; phi += 5) {
            const double counts =
                (9e5 - theta * theta * theta) * (1 + measured.Chi(theta * kDegree, phi * kDegree));
            table += std::to_string(theta) + "," + std::to_string(phi) + "," + std::to_string(counts) + "\n";
        }
    }
    request.measured = folder_.Write("data.csv", table);
    request.background = ParseBackgroundModel("mean");
    request.thetaMin = 25.0;
    request.thetaMax = 75.0;
    request.searched.rotation = true;
    const CompareResult result = ComparePatterns(request);
    EXPECT_EQ(result.theta.size(), std::size_t{17} * 72);  // 26, 29, ... 74
    EXPECT_NEAR(result.setting.rotation, -25.0, 0.02);
    EXPECT_LT(result.agreement.R, 1e-3);
    EXPECT_GT(result.agreement.correlation, 0.999);
    request.thetaMin = 26.0;  // points at the ends count
    request.thetaMax = 74.0;
    request.searched.rotation = false;
    EXPECT_EQ(ComparePatterns(request).theta.size(), result.theta.size());
}

}  // namespace
