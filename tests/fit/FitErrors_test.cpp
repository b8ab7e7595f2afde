#include "fit/FitErrors.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Objectives.h"
#include "fit/LocalFit.h"

namespace {

const std::vector<double> kX = {-2.0, -1.0, 0.5, 1.0, 3.0, 4.0};
const std::vector<double> kY = {-2.7, -1.4, 1.9, 2.2, 7.4, 8.5};
const std::vector<double> kSigma = {0.2, 0.1, 0.3, 0.2, 0.4, 0.2};

std::vector<double> LineResiduals(const FitPoint& line) {
    std::vector<double> residuals;
    for (std::size_t i = 0; i < kX.size(); ++i)
        residuals.push_back((line[0] + line[1] * kX[i] - kY[i]) / kSigma[i]);
    return residuals;
}

const std::vector<FitParameter> kLine = {{"a", 0.0, -10.0, 10.0, "angstrom"}, {"b", 0.0, -100.0, 100.0, ""}};

// The straight line by the sums of P. R. Bevington's textbook, its errors scaled by chi^2.
TEST(NoiseErrors, AreThoseOfTheStraightLine) {
    double s = 0.0, sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0;
    for (std::size_t i = 0; i < kX.size(); ++i) {
        const double w = 1.0 / (kSigma[i] * kSigma[i]);
        s += w;
        sx += w * kX[i];
        sy += w * kY[i];
        sxx += w * kX[i] * kX[i];
        sxy += w * kX[i] * kY[i];
    }
    const double delta = s * sxx - sx * sx;
    const FitPoint line = {(sxx * sy - sx * sxy) / delta, (s * sxy - sx * sy) / delta};
    double chiSquared = 0.0;
    for (const double residual : LineResiduals(line)) chiSquared += residual * residual;
    const double scale = chiSquared / 4.0;

    const ParameterSpace space(kLine, {{"at2", "a + 2*b", ""}, {"square", "a^2", ""}});
    FunctionObjective objective(LineResiduals);
    FitProblem problem(space, objective);
    const LocalFit fit = FitByGaussNewton(problem, space.Start(), {.stepTolerance = 1e-9});
    EXPECT_NEAR(fit.best.point[0], line[0], 1e-8);
    EXPECT_NEAR(fit.best.point[1], line[1], 1e-8);

    const NoiseErrors errors = NoiseErrorsAt(problem, fit.best);
    EXPECT_EQ(errors.degreesOfFreedom, 4.0);
    EXPECT_NEAR(errors.covariance[0][0], scale * sxx / delta, 1e-9);
    EXPECT_NEAR(errors.covariance[1][1], scale * s / delta, 1e-9);
    EXPECT_NEAR(errors.covariance[0][1], -scale * sx / delta, 1e-9);
    EXPECT_NEAR(errors.Correlation(0, 1), -sx / std::sqrt(s * sxx), 1e-7);
    // Of the value of the line at x = 2, and of the square of its value at 0.
    const auto derived = DerivedErrors(space, fit.best.point, errors);
    EXPECT_NEAR(*derived[0], std::sqrt(scale * (sxx - 4.0 * sx + 4.0 * s) / delta), 1e-8);
    EXPECT_NEAR(*derived[1], 2.0 * std::abs(line[0]) * std::sqrt(scale * sxx / delta), 1e-8);

    // A restraint adds its weight to the sum of weights, and a measurement to their number.
    std::vector<FitParameter> restrained = kLine;
    restrained[0].restraint = Restraint{line[0], 0.05};
    const ParameterSpace narrower(restrained);
    FitProblem withRestraint(narrower, objective);
    const NoiseErrors less = NoiseErrorsAt(withRestraint, withRestraint.EvaluateOne(line));
    const double heavier = (s + 400.0) * sxx - sx * sx;
    EXPECT_NEAR(less.covariance[0][0], chiSquared / 5.0 * sxx / heavier, 1e-9);
}

TEST(NoiseErrors, AreMissingWithTheirReason) {
    const ParameterSpace space({{"a", 0.0, -10.0, 10.0, ""},
                                {"b", 0.0, -100.0, 100.0, ""},
                                {"idle", 1.0, 0.0, 1.0, ""},
                                {"edge", 1.0, 0.0, 1.0, ""},
                                {"also", 1.0, 0.0, 9.0, ""}},
                               {{"sum", "a + edge", ""},
                                {"slope", "2*b", ""},
                                {"none", "1/b", ""},
                                {"within", "b*sqrt(1 - edge)", ""}});
    FunctionObjective objective([](const FitPoint& x) {
        std::vector<double> residuals = LineResiduals({x[0] + 2.0 * x[4], x[1]});
        residuals.push_back(x[3] - 2.0);
        return residuals;
    });
    FitProblem problem(space, objective);
    const Trial start = problem.EvaluateOne(space.Start());
    const NoiseErrors errors = NoiseErrorsAt(problem, start);
    EXPECT_EQ(errors.degreesOfFreedom, static_cast<double>(start.evaluation.residuals.size()) - 3.0);
    EXPECT_EQ(errors.reason[0], "the data cannot tell it from a change of also");
    EXPECT_EQ(errors.reason[4], "the data cannot tell it from a change of a");
    EXPECT_EQ(errors.reason[2], "nothing depends on it");
    EXPECT_EQ(errors.reason[3], "it is at its upper bound");
    EXPECT_FALSE(errors.sigma[0] || errors.sigma[2] || errors.sigma[3] || errors.sigma[4]);
    EXPECT_TRUE(errors.sigma[1]);
    EXPECT_EQ(errors.Correlation(0, 1), 0.0);
    const auto derived = DerivedErrors(space, space.Start(), errors);
    EXPECT_FALSE(derived[0]);
    EXPECT_NEAR(*derived[1], 2.0 * *errors.sigma[1], 1e-9);
    EXPECT_TRUE(std::isnan(space.Derived(space.Start())[2]));
    EXPECT_FALSE(derived[2]);
    EXPECT_EQ(derived[3], 0.0);  // it has no value beyond the bound

    const ParameterSpace line(kLine);
    FunctionObjective twoData([](const FitPoint& x) { return std::vector{x[0] - 1.0, x[1] + x[0] - 1.0}; });
    FitProblem few(line, twoData);
    EXPECT_EQ(NoiseErrorsAt(few, few.EvaluateOne({0.0, 0.0})).reason[0],
              "there are no more data than parameters");
}

}  // namespace
