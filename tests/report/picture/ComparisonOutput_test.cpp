#include "report/picture/ComparisonOutput.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"
#include "report/picture/PngPicture.h"

namespace {

CompareResult Result(const std::vector<double>& chiB) {
    CompareResult result;
    result.theta = {10.0, 20.0, 30.0};
    result.phi = {0.0, 45.0, 90.0};
    result.weight = {1.0, 1.0, 1.0};
    result.chiA = {0.5, -0.25, 0.125};
    result.chiB = chiB;
    result.setting = {7.5, 1.25, 2.0, 30.0};
    result.multipoleR = 0.75;
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    return result;
}

TEST(WriteDifference, ScalesBWhereAScaleServes) {
    const TempFolder folder;
    WriteDifference(Result({1.0, -0.5, 0.25}), folder.Path("like.csv"));
    EXPECT_EQ(
        folder.Read("like.csv"),
        "# R = 0.2\n# scale of b = 0.5\n# R with the scale = 0\n# R of absolute differences = 0.333333333\n"
        "# R of multipoles = 0.75\n# correlation = 1\n# rotation of b = 7.5 degrees\n"
        "# polar offset = 1.25 degrees\n# tilt = 2 degrees towards 30 degrees\n# chi_b is turned and scaled; "
        "angles in degrees\n"
        "theta,phi,chi_a,chi_b,difference\n10,0,0.5,0.5,0\n20,45,-0.25,-0.25,0\n30,90,0.125,0.125,0\n");
    WriteDifference(Result({-0.5, 0.25, 0.0}), folder.Path("opposed.csv"));
    const std::string opposed = folder.Read("opposed.csv");
    EXPECT_NE(opposed.find("# scale of b = 0\n"), std::string::npos);
    EXPECT_NE(
        opposed.find(
            "# chi_b is turned, not scaled: no factor above 0 brings it nearer to chi_a; angles in degrees\n"
            "theta,phi,chi_a,chi_b,difference\n"
            "10,0,0.5,-0.5,1\n20,45,-0.25,0.25,-0.5\n30,90,0.125,0,0.125\n"),
        std::string::npos)
        << opposed;
}

/// Directions 5 degrees apart on rings from 20 to 60 degrees; a is 1 on the side of +y and -1 on the other,
/// and b a times `factor`.
CompareResult Belt(double factor) {
    CompareResult result;
    for (int theta = 20; theta <= 60; theta += 5) {
        for (int phi = 0; phi < 360; phi += 5) {
            result.theta.push_back(theta);
            result.phi.push_back(phi);
            result.weight.push_back(1.0);
            result.chiA.push_back(phi % 180 == 0 ? 0.0 : phi < 180 ? 1.0 : -1.0);
            result.chiB.push_back(factor * result.chiA.back());
        }
    }
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    return result;
}

// a, b and a - b side by side; a b that is opposed to a is not scaled, and their difference the largest
// value.
TEST(WriteDifference, DrawsBothAndTheirDifferenceWhereTheyWereCompared) {
    const TempFolder folder;
    DiscPicture discs;
    discs.images.assign(3, {Sampled(kMaps[0], 5.0, [](double, double, double) { return 0.0; }), "title"});
    const DiscLayout layout(discs);
    for (const auto& [factor, values] :
         {std::pair{2.0, std::array{1.0, 1.0, 0.0}}, {-0.5, {2 / 3.0, -1 / 3.0, 1.0}}}) {
        WriteDifference(Belt(factor), folder.Path("d.png"));
        const PngPicture png(folder.Path("d.png"));
        const auto off = [&](const Colour& colour, std::size_t panel, double theta, double phi) {
            return Difference(
                png.At(layout.Direction(View::kAzimuthalEquidistant, panel, theta * kDegree, phi * kDegree)),
                colour);
        };
        const auto colour = [](double value) { return ColourAt(ColourMap::kDiverging, 0.5 + 0.5 * value); };
        for (const double theta : {25.0, 45.0, 61.0}) {
            for (std::size_t panel = 0; panel < 3; ++panel) {
                EXPECT_LT(off(colour(values[panel]), panel, theta, 95.0), 0.05) << panel << ' ' << theta;
                EXPECT_LT(off(colour(-values[panel]), panel, theta, 265.0), 0.05) << panel << ' ' << theta;
            }
        }
        for (const double theta : {10.0, 70.0})
            EXPECT_LT(off({1.0, 1.0, 1.0}, 0, theta, 95.0), 1e-9) << theta;
    }
}

}  // namespace
