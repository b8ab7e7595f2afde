#include "run/ScanOutput.h"

#include <gtest/gtest.h>

#include "TempFolder.h"

using namespace qvre;

namespace {

ScannedAgreement Point(const std::vector<double>& values, double R, const std::string& member = {}) {
    ScannedAgreement point{values, {}, member};
    point.agreement.R = R;
    return point;
}

/// R = 0.1 + 4 (a - 3.6)^2: within 0.05 it rises by 0.01, the R level of 200 data.
double Parabola(double a) {
    return 0.1 + 4.0 * (a - 3.6) * (a - 3.6);
}

constexpr const char* kSource = " independent data (N. A. Booth et al., Surf. Sci. 387, 152 (1997))";

TEST(ScanOutput, TellsTheMinimumOfValuesInAnyOrder) {
    ComparedScan scan{{{"a", "angstrom"}}, {}, 200.0};
    for (const double a : {3.7, 3.5, 3.8, 3.6}) scan.points.push_back(Point({a}, Parabola(a)));
    EXPECT_EQ(BestOfScan(scan),
              "a = 3.60 +- 0.05 angstrom has the least R; table scan.csv, plot scan.png\n"
              "R 0.1000 at the minimum of the parabola; +- is where it rises by R sqrt(2/N), for N = 200" +
                  std::string(kSource));
    EXPECT_EQ(ScanColumns(scan), "a,");
    EXPECT_EQ(PointFields(scan.points[0]), "3.7,");
}

// Patterns that are kept apart stand at the same values of the scan.
TEST(ScanOutput, TellsTheMinimumOfEachMember) {
    ComparedScan scan{{{"a", "angstrom"}}, {}, 200.0};
    for (const double a : {3.5, 3.6, 3.7}) {
        scan.points.push_back(Point({a}, Parabola(a), "layer1"));
        scan.points.push_back(Point({a}, 0.5 - 0.1 * a, "layer2"));
    }
    EXPECT_EQ(BestOfScan(scan),
              "layer1: a = 3.60 +- 0.05 angstrom has the least R; table scan.csv, plot scan.png\n"
              "R 0.1000 at the minimum of the parabola; +- is where it rises by R sqrt(2/N), for N = 200" +
                  std::string(kSource) +
                  "\nlayer2: a = 3.7 angstrom has the least R; table scan.csv, plot scan.png\n"
                  "no error of the minimum: it lies at the end of the scan: scan further");
    EXPECT_EQ(ScanColumns(scan), "a,member,");
    EXPECT_EQ(PointFields(scan.points[1]), "3.5,layer2,");
    const TempFolder folder;
    DrawScan(scan, folder.Path("scan.svg"));
    for (ScannedAgreement& point : scan.points) point.values.push_back(0.0);
    scan.settings.push_back({"b"});
    DrawScan(scan, folder.Path("map.svg"));
    EXPECT_FALSE(folder.Read("map.svg").empty());
}

}  // namespace
