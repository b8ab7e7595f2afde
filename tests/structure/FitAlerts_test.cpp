#include "structure/FitAlerts.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>

#include "LinearFit.h"

namespace {

/// A fit that nothing is wrong with.
FitReport Good() {
    FitReport report = LinearFit().Report();
    report.hasSigmas = true;
    report.convergence = {{"clusters of 150 atoms instead of 100", 0.1099}};
    report.cell.axes = gemmi::Mat33(2.5, 0, 0, 0, 2.5, 0, 0, 0, 20);
    report.cell.atoms = {{"Ni", {0, 0, 0}}, {"O", {0.5, 0.5, 0.045}}};  // 1.98 angstrom, 1.9 usual
    report.records = {
        {}, {}, FailedEvaluation("atoms 3 and 7 collide"), FailedEvaluation("atoms 1 and 2 collide")};
    Structure structure;
    structure.atoms.resize(2);
    structure.atoms[1].atom = "O";
    structure.atoms[1].U = ZfLDoubleMatrix(1, 1);
    structure.atoms[1].U.At(0, 0) = 0.0;
    report.cluster.structures = {structure};
    return report;
}

struct Case {
    std::string alert;
    std::function<void(FitReport&)> spoil;
};

}  // namespace

TEST(FitAlerts, AGoodFitHasNone) {
    EXPECT_EQ(FitAlerts(Good()), std::vector<std::string>{});
}

TEST(FitAlerts, EachFaultHasItsLine) {
    const Trial other = LinearFit().Report().best;
    const Case cases[] = {
        {"d12 is at its upper bound, 2.2 angstrom: widen the bounds, or doubt the model",
         [](FitReport& r) { r.best.point[0] = 2.2; }},
        {"d12 and d23 are correlated by -0.92: hold one of them, or add data of another energy or angle",
         [](FitReport& r) { r.noise = LinearFit(-0.92).Report().noise; }},
        {"Ni and O are 1.500 angstrom apart, where 1.90 is usual: no such bond is known; set bounds that "
         "exclude it",
         [](FitReport& r) {
             r.cell.atoms[1].fractional = {0, 0, 0.075};
         }},
        {"the mean square displacement of O is negative: give it a lower bound of 0",
         [](FitReport& r) { r.cluster.structures[0].atoms[1].U.At(0, 0) = -1e-22; }},
        {"d12 is negative, -20 K: give it a lower bound above 0",
         [](FitReport& r) {
             r.space.parameters[0] = {
                 .name = "d12", .start = 100.0, .lower = -50.0, .upper = 900.0, .unit = "K"};
             r.best.point[0] = -20.0;
         }},
        {"R is 0.1101 instead of 0.1000 with clusters of 150 atoms instead of 100, a change beyond the R "
         "level: "
         "calculate better and fit again",
         [](FitReport& r) { r.convergence[0].r = 0.1101; }},
        {"not converged: the limit of 500 evaluations was reached; allow more and go on",
         [](FitReport& r) {
             r.stop = FitStop::kLimit;
             r.evaluations = 500;
         }},
        {"not converged: the fit was interrupted; start it again to go on",
         [](FitReport& r) { r.stop = FitStop::kInterrupted; }},
        {"1 rival lies within the R level: the structure is not determined; add data of another energy or "
         "angle, or "
         "knowledge that excludes it",
         [&other](FitReport& r) { r.rivals = {other}; }},
        {"R = 0.51: nothing fits, and the errors mean nothing; search globally, check azimuth, energy and "
         "emitters, or "
         "try another model",
         [](FitReport& r) {
             r.best.evaluation.r = 0.51;
             r.convergence.clear();
         }},
        {"the method jumps where the order of the atoms changes, and differences over small steps mean "
         "little: "
         "fit with FULL or SINGLE",
         [](FitReport& r) { r.isSmooth = false; }},
        {"chi-squared per degree of freedom is 2.5: the model misses more than noise; go by the R level, the "
         "noise "
         "errors are too small",
         [](FitReport& r) { r.noise->chiSquared = 2.5 * r.noise->degreesOfFreedom; }},
        {"d23 is 3.2 sigma from its restraint 2.03 +- 0.4 angstrom: data and restraint contradict each "
         "other; one of "
         "them is wrong",
         [](FitReport& r) {
             r.space.parameters[1].upper = 4.0;
             r.best.point[1] = 2.03 + 3.2 * 0.4;
         }},
        {"the profile of d23 came to a better structure, R = 0.0900 at d23 = 2.2 angstrom: fit again from "
         "there",
         [&other](FitReport& r) {
             r.levels[1].better = other;
             r.levels[1].better->point[1] = 2.2;
             r.levels[1].better->evaluation.r = 0.09;
         }},
        {"3 of 5 evaluations failed (atoms 1 and 5 collide): set bounds that exclude such structures",
         [](FitReport& r) { r.records.push_back(FailedEvaluation("atoms 1 and 5 collide")); }},
    };
    for (const Case& one : cases) {
        FitReport report = Good();
        one.spoil(report);
        EXPECT_EQ(FitAlerts(report), std::vector<std::string>{one.alert});
    }
}

TEST(FitAlerts, WithoutMeasuredSigmasChiSquaredTellsNothing) {
    FitReport report = Good();
    report.noise->chiSquared = 25.0 * report.noise->degreesOfFreedom;
    report.hasSigmas = false;
    EXPECT_EQ(FitAlerts(report), std::vector<std::string>{});
}

TEST(FitAlerts, AFitThatRunsIsNotBlamedForIt) {
    FitReport report = Good();
    report.stop = FitStop::kFailed;
    report.isRunning = true;
    EXPECT_EQ(FitAlerts(report), std::vector<std::string>{});
}
