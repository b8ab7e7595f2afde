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
    result.rotation = 7.5;
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    return result;
}

TEST(WriteDifference, ScalesBWhereAScaleServes) {
    const TempFolder folder;
    WriteDifference(Result({1.0, -0.5, 0.25}), folder.Path("like.csv"));
    EXPECT_EQ(folder.Read("like.csv"),
              "# R = 0.2\n# scale of b = 0.5\n# R with the scale = 0\n# correlation = 1\n"
              "# rotation of b = 7.5 degrees\n# chi_b is turned and scaled; angles in degrees\n"
              "theta,phi,chi_a,chi_b,difference\n10,0,0.5,0.5,0\n20,45,-0.25,-0.25,0\n30,90,0.125,0.125,0\n");
    WriteDifference(Result({-0.5, 0.25, 0.0}), folder.Path("opposed.csv"));
    const std::string opposed = folder.Read("opposed.csv");
    EXPECT_NE(opposed.find("# scale of b = 0\n"), std::string::npos);
    EXPECT_NE(opposed.find("# chi_b is turned, not scaled; angles in degrees\n"
                           "theta,phi,chi_a,chi_b,difference\n"
                           "10,0,0.5,-0.5,1\n20,45,-0.25,0.25,-0.5\n30,90,0.125,0,0.125\n"),
              std::string::npos)
        << opposed;
}

/// Directions 5 degrees apart on rings from 20 to 60 degrees; a is 1 on the side of +y and -1 on the other.
CompareResult Belt() {
    CompareResult result;
    for (int theta = 20; theta <= 60; theta += 5) {
        for (int phi = 0; phi < 360; phi += 5) {
            result.theta.push_back(theta);
            result.phi.push_back(phi);
            result.weight.push_back(1.0);
            result.chiA.push_back(phi % 180 == 0 ? 0.0 : phi < 180 ? 1.0 : -1.0);
            result.chiB.push_back(result.chiA.back());
        }
    }
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    return result;
}

TEST(WriteDifference, DrawsBothAndTheirDifferenceWhereTheyWereCompared) {
    const TempFolder folder;
    WriteDifference(Belt(), folder.Path("d.png"));
    const PngPicture png(folder.Path("d.png"));
    DiscPicture discs;
    discs.images.assign(3, {Sampled(kMaps[0], 5.0, [](double, double, double) { return 0.0; }), "title"});
    const DiscLayout layout(discs);
    const auto seen = [&](std::size_t panel, double theta, double phi) {
        return png.At(layout.Direction(View::kAzimuthalEquidistant, panel, theta * kDegree, phi * kDegree));
    };
    const Colour high = ColourAt(ColourMap::kDiverging, 1.0);
    const Colour middle = ColourAt(ColourMap::kDiverging, 0.5);
    const Colour low = ColourAt(ColourMap::kDiverging, 0.0);
    for (const double theta : {25.0, 45.0, 61.0}) {
        for (const std::size_t panel : {0U, 1U}) {
            EXPECT_LT(Difference(seen(panel, theta, 95.0), high), 0.05) << theta;
            EXPECT_LT(Difference(seen(panel, theta, 265.0), low), 0.05) << theta;
        }
        EXPECT_LT(Difference(seen(2, theta, 95.0), middle), 0.05) << theta;
    }
    for (const double theta : {10.0, 70.0})
        EXPECT_LT(Difference(seen(0, theta, 95.0), {1.0, 1.0, 1.0}), 1e-9) << theta;
}

}  // namespace
