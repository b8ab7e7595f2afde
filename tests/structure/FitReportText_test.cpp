#include "structure/FitReportText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "LinearFit.h"

namespace {

void ExpectHolds(const std::string& text, const std::string& part) {
    EXPECT_NE(text.find(part), std::string::npos) << part << "is not in\n" << text;
}

/// Rings of equal chi, calculated with half the amplitude; one ring is missed.
FittedData Rings(const std::string& name, double missed) {
    FittedData data{
        .name = name, .weight = 2.0, .independentData = 50.0, .compared = {}, .amplitude = 2.0, .r = 0.08};
    for (const double theta : {10.0, 20.0, 30.0, 40.0, 50.0, 60.0}) {
        for (int phi = 0; phi < 360; phi += 15) {
            data.compared.theta.push_back(theta);
            data.compared.phi.push_back(phi);
            data.compared.weight.push_back(theta == 20.0 ? 3.0 : 1.0);
            data.compared.chiA.push_back(phi % 30 == 0 ? 0.4 : -0.4);
            const double miss = theta == missed ? 0.05 : theta == 60.0 ? 0.025 : 0.0;
            data.compared.chiB.push_back(data.compared.chiA.back() / 2.0 + miss);
        }
    }
    data.compared.setting = {.rotation = -0.04, .thetaOffset = -0.5, .tilt = 1.25, .tiltAzimuth = 90.0};
    return data;
}

}  // namespace

TEST(FitReportText, LastLinesTellEachErrorByItsName) {
    // Half widths of the R level: sqrt(10) noise errors.
    EXPECT_EQ(FitLastLines(LinearFit().Report(), "out"),
              "d12 = 1.772 +- 0.008 angstrom (noise), R level 1.75 to 1.80\n"
              "d23 = 2.04 +- 0.02 angstrom (noise), R level 1.98 to 2.10\n"
              "d13 = 3.81 +- 0.02 angstrom (noise)\n"
              "R = 0.1000, R level 0.1100 for N = 200 independent data\n"
              "report: out/report.txt\n");
}

TEST(FitReportText, MissingErrorsHaveTheirReason) {
    // At the bound q = 3.5^2, and the level, at q = 23.475, lies 4.845 noise errors from 1.772.
    const FitReport report = LinearFit(0.5, 1.8).Report();
    ExpectHolds(
        FitLastLines(report, "out"),
        "d12 = 1.8 angstrom, R level below 1.811; no noise error: it is at its lower bound; no lower end of "
        "the R level: it is at its lower bound\n");
    ExpectHolds(FitReportText(report),
                "  d12  angstrom  1.9    1.8 to 2.2  1.8    none         below 1.811\n");
    ExpectHolds(FitReportText(report), "  d12 has no lower end of the R level: it is at its lower bound\n");
    // What hangs on a parameter without an error has none.
    ExpectHolds(FitReportText(report), "  d13 = 3.87591 angstrom  = d12 + d23\n");
}

TEST(FitReportText, TellsAllOfParameters) {
    FitReport report = LinearFit().Report();
    report.hasSigmas = true;
    Trial rival = report.best;
    rival.point = {1.3, 2.2};
    rival.evaluation.r = 0.1042;
    report.rivals = {rival};
    report.convergence = {{"clusters of 150 atoms instead of 100", 0.0985}};
    report.records = {FailedEvaluation("atoms 3 and 7 collide"), {}, {}};
    const std::string text = FitReportText(report);
    ExpectHolds(text, "  evaluations  9 (1 failed), 12 s of calculation\n");
    ExpectHolds(
        text,
        "  R = 0.1000; structures up to the R level 0.1100, for N = 200 independent data, are as good\n"
        "  chi-squared 100 of 101 degrees of freedom, 0.99 each\n");
    ExpectHolds(text,
                "       unit      start  bounds      best   noise error  R level\n"
                "  d12  angstrom  1.9    1.2 to 2.2  1.772  0.008        1.75 to 1.80\n"
                "  d23  angstrom  2.1    1.8 to 2.3  2.04   0.02         1.98 to 2.10\n");
    ExpectHolds(text, "  d23  2.03 +- 0.4 angstrom  missed by 0.0 sigma\n");
    ExpectHolds(text, "  d13 = 3.81 +- 0.02 angstrom  = d12 + d23\n");
    ExpectHolds(text, "  R       d12  d23\n  0.1042  1.3  2.2\n");
    ExpectHolds(text, "Correlations above 0.1\n  d12  d23  +0.50\n");
    ExpectHolds(text, "  clusters of 150 atoms instead of 100  R = 0.0985\n");
    EXPECT_EQ(FitReportText(LinearFit(0.05).Report()).find("Correlations"), std::string::npos);
}

TEST(FitReportText, TellsWhereRComesFrom) {
    // On the ring at 20 degrees 24 points of weight 3 are missed by 0.1, on that at 60 of weight 1 by 0.05:
    // 12 to 1 of the squared differences. There R = 0.01/(0.16 + 0.17), as the
    // calculation is 0.5 and -0.3 instead of 0.4 and -0.4.
    FitReport report = LinearFit().Report();
    report.data = {Rings("map 1", 20.0), Rings("map 2", 60.0)};
    report.data[1].weight = 1.0;
    const std::string text = FitReportText(report);
    ExpectHolds(text,
                "         points  N   weight  R       R level  amplitude  rotation  polar offset  tilt       "
                "      part of R\n"
                "  map 1  144     50  2       0.0800  0.0960   2          0.0       -0.50         1.25 "
                "towards 90  67 %\n");
    ExpectHolds(text,
                "  map 1       points  R         part of the squared differences\n"
                "  theta = 20  24      0.0303    92 %\n"
                "  theta = 60  24      0.007752  8 %\n");
}

TEST(FitReportText, ScansAreTheirOwnParts) {
    FittedData data{.name = "scans", .compared = {}};
    for (const double phi : {0.0, 180.0, 45.0}) {
        for (double theta = 0.0; theta < 60.0; theta += 2.0) {
            data.compared.theta.push_back(theta);
            data.compared.phi.push_back(phi);
            data.compared.weight.push_back(1.0);
            data.compared.chiA.push_back(0.2);
            data.compared.chiB.push_back(phi == 45.0 ? 0.1 : 0.2);
        }
    }
    FitReport report = LinearFit().Report();
    report.data = {data};
    ExpectHolds(FitReportText(report),
                "  phi = 45  30      0.2000    100 %\n"
                "  phi = 0   60      0.000000  0 %\n");
}

TEST(FitReportText, AFitWithoutAStructureTellsWhy) {
    FitReport report{
        .title = "Ni(001)", .detail = "atoms 3 and 7 collide", .space = LinearFit().Report().space};
    EXPECT_EQ(FitLastLines(report, "out"),
              "warning: not converged: the fit failed: atoms 3 and 7 collide\nreport: out/report.txt\n");
    ExpectHolds(FitReportText(report), "  ended        failed: atoms 3 and 7 collide\n");
    report.isRunning = true;
    EXPECT_EQ(FitLastLines(report, "out"), "report: out/report.txt\n");
}
