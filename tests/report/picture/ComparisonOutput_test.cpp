#include "report/picture/ComparisonOutput.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"

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
    EXPECT_EQ(ErrorText([&] { WriteDifference(Result({1.0, 2.0, 3.0}), folder.Path("a.CSV")); }),
              "A difference is written as .csv, .png, .svg or .pdf, not as " + folder.Path("a.CSV"));
}

}  // namespace
