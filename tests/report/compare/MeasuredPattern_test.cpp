#include "report/compare/MeasuredPattern.h"

#include <gtest/gtest.h>

#include "ErrorText.h"

namespace {

using Numbers = std::vector<double>;

TEST(MeasuredPattern, TakesTheUsualTables) {
    for (const char* text :
         {"10,20,300\n11.5,-20,4e2\n", "# made today\n\n10 20 300 # first\n 11.5\t-20  400\n",
          "phi; Counts ;theta\r\n20; 300; 10\r\n-20;+400;11.5\r\n",
          "Azimuth,error,POLAR,i\n20,bad,10,300\n-20,,11.5,400"}) {
        const MeasuredPattern pattern = ParseMeasuredPattern(text);
        EXPECT_EQ(pattern.theta, (Numbers{10, 11.5})) << text;
        EXPECT_EQ(pattern.phi, (Numbers{20, -20})) << text;
        EXPECT_EQ(pattern.intensity, (Numbers{300, 400})) << text;
        EXPECT_TRUE(pattern.chi.empty());
    }
    EXPECT_EQ(ParseMeasuredPattern("theta phi chi\n1 2 -0.5\n").chi, Numbers{-0.5});
}

TEST(MeasuredPattern, ErrorsNameTheLine) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "there are no points in the table"},
        {"theta,phi,I\n", "there are no points in the table"},
        {"1,2,3\n1,2\n", "line 2: there are 2 fields instead of 3; a decimal sign is a point"},
        {"10,5;20,0;100,3\n", "line 1: there are 6 fields instead of 3; a decimal sign is a point"},
        {"#\n1,2,nan\n", "line 2: \"nan\" is not a number"},
        {"1,2,3x\n", "line 1: \"3x\" is not a number"},
        {"1,2,\n", "line 1: \"\" is not a number"},
        {"1,2,1e999\n", "line 1: \"1e999\" is not a number"},
        {"90.5,2,3\n", "line 1: the polar angle 90.5 does not lie between 0 and 90 degrees"},
        {"theta,phi\n",
         "line 1: the columns have to be named theta, phi and intensity (or chi), or to bring "
         "numbers alone"},
        {"theta,phi,I,counts\n", "line 1: there are two columns for the quantity \"counts\""}};
    for (const auto& [text, message] : cases)
        EXPECT_EQ(ErrorText([t = text] { ParseMeasuredPattern(t); }), message) << text;
    EXPECT_EQ(ErrorText([] { LoadMeasuredPattern("/nonexistent/data.csv"); }),
              "/nonexistent/data.csv: there is no such file");
}

}  // namespace
