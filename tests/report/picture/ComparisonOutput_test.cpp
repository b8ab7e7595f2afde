#include "report/picture/ComparisonOutput.h"

#include <gtest/gtest.h>

#include <cmath>

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

/// Directions on rings and azimuths, with a chi that varies over them; b is a.
CompareResult Directions(const std::vector<double>& thetas, const std::vector<double>& phis) {
    CompareResult result;
    for (const double theta : thetas) {
        for (const double phi : phis) {
            result.theta.push_back(theta);
            result.phi.push_back(phi);
            result.weight.push_back(1.0);
            result.chiA.push_back(std::sin(theta) + std::cos(phi));
        }
    }
    result.chiB = result.chiA;
    result.agreement = CompareModulations(result.chiA, result.chiB, result.weight);
    return result;
}

std::vector<double> Steps(double from, double to, double step) {
    std::vector<double> values;
    for (double value = from; value <= to; value += step) values.push_back(value);
    return values;
}

bool IsBlank(const PngPicture& png, const DiscLayout& layout, double theta, double phi) {
    const PicturePoint point =
        layout.Direction(View::kAzimuthalEquidistant, 0, theta * kDegree, phi * kDegree);
    return Difference(png.At(point), {1.0, 1.0, 1.0}) < 1e-9;
}

// A sector of 100 degrees, in steps of 4, with a belt left out of it.
TEST(WriteDifference, IsBlankWhereNothingWasMeasured) {
    const TempFolder folder;
    std::vector<double> thetas = Steps(12, 36, 3);
    for (const double theta : Steps(51, 72, 3)) thetas.push_back(theta);
    WriteDifference(Directions(thetas, Steps(-20, 80, 4)), folder.Path("d.png"));
    const PngPicture png(folder.Path("d.png"));
    DiscPicture discs;
    discs.images.assign(3, {Sampled(kMaps[0], 5.0, [](double, double, double) { return 0.0; }), "title"});
    const DiscLayout layout(discs);
    for (const double phi : {-18.0, 40.0, 78.0}) {
        for (const double theta : {12.0, 25.5, 36.0, 52.0, 72.0})
            EXPECT_FALSE(IsBlank(png, layout, theta, phi)) << theta << ' ' << phi;
        for (const double theta : {7.0, 43.0, 76.0})
            EXPECT_TRUE(IsBlank(png, layout, theta, phi)) << theta << ' ' << phi;
    }
    for (const double phi : {-27.0, 87.0, 185.0}) EXPECT_TRUE(IsBlank(png, layout, 52.0, phi)) << phi;
}

// Curves fill a column, three discs a page.
TEST(WriteDifference, ScansAreCurves) {
    const TempFolder folder;
    const auto width = [&folder](const CompareResult& result) {
        WriteDifference(result, folder.Path("d.png"));
        return PngPicture(folder.Path("d.png")).Width();
    };
    constexpr int kColumn = 800;  // pixels
    EXPECT_EQ(width(Directions({45}, Steps(0, 120, 3))), kColumn);
    EXPECT_EQ(width(Directions({30, 40, 50}, Steps(0, 120, 3))), kColumn);
    EXPECT_EQ(width(Directions(Steps(0, 80, 2), {30, 210})), kColumn);
    EXPECT_EQ(width(Directions(Steps(0, 80, 2), {30, 75, 100})), kColumn);
    EXPECT_GT(width(Directions({30, 40, 50, 60}, Steps(0, 120, 3))), kColumn);
    EXPECT_GT(width(Directions(Steps(0, 80, 2), {0, 30, 60, 90})), kColumn);
}

}  // namespace
