#include "fit/LocalFit.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Objectives.h"

namespace {

using Method = LocalFit (*)(FitProblem&, const FitPoint&, const LocalFitSettings&);

const LocalFitSettings kSharp = {.stepTolerance = 1e-9, .differenceStep = 1e-6};

LocalFit FitWith(Method method, const ParameterSpace& space, FunctionObjective objective,
                 const LocalFitSettings& settings = kSharp) {
    FitProblem problem(space, objective);
    return method(problem, space.Start(), settings);
}

TEST(GaussNewton, FollowsTheValleyOfRosenbrock) {
    const ParameterSpace space({{"a", -1.2, -3.0, 3.0, ""}, {"b", 1.0, -3.0, 3.0, ""}});
    const LocalFit fit = FitWith(FitByGaussNewton, space, FunctionObjective(Rosenbrock));
    EXPECT_TRUE(IsConverged(fit.stop)) << WordFor(fit.stop);
    EXPECT_NEAR(fit.best.point[0], 1.0, 1e-6);
    EXPECT_NEAR(fit.best.point[1], 1.0, 1e-6);
    EXPECT_LT(fit.evaluations, 100);
}

// The misfit is (a + b - 4)^2 + (a - b)^2 + 1/4 (b - 3)^2; with a <= 1 given, b follows from its derivative.
TEST(LocalFits, StopAtABoundAndMinimiseTheRest) {
    const ParameterSpace space({{"a", 0.2, -1.0, 1.0, ""}, {"b", -4.0, -5.0, 5.0, ""}});
    const auto residuals = [](const FitPoint& x) {
        return std::vector{x[0] + x[1] - 4.0, x[0] - x[1], 0.5 * (x[1] - 3.0)};
    };
    const double b = (4.0 - 1.0 + 1.0 + 0.75) / 2.25;
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        const LocalFit fit = FitWith(method, space, FunctionObjective(residuals));
        EXPECT_TRUE(IsConverged(fit.stop)) << WordFor(fit.stop);
        EXPECT_EQ(fit.best.point[0], 1.0);
        EXPECT_NEAR(fit.best.point[1], b, 1e-5);
    }
}

// As of layers below a cluster, which only move the origin of its atoms by their rounding.
TEST(GaussNewton, LeavesAloneWhatIsOnlyRounded) {
    const ParameterSpace space({{"a", 0.2, -1.0, 3.0, ""}, {"b", 0.3, 0.0, 1.0, ""}});
    const auto residuals = [](const FitPoint& x) {
        const double rounded = 1.0 + ((x[1] + 7.0) - 7.0 - x[1]);
        return std::vector{(x[0] - 1.0) * rounded, 2.0 * (x[0] - 1.5) * rounded, rounded, 3.0 * rounded};
    };
    LocalFitSettings settings = kSharp;
    settings.differenceStep = 1e-3;
    const LocalFit fit = FitWith(FitByGaussNewton, space, FunctionObjective(residuals), settings);
    EXPECT_TRUE(IsConverged(fit.stop)) << WordFor(fit.stop);
    EXPECT_NEAR(fit.best.point[0], 1.4, 1e-6);
    EXPECT_EQ(fit.best.point[1], 0.3);
}

TEST(LocalFits, LeaveABoundThatTheStartLiesAt) {
    const ParameterSpace space({{"a", 1.0, -1.0, 1.0, ""}, {"b", 0.0, 0.0, 2.0, ""}});
    const auto residuals = [](const FitPoint& x) {
        return std::vector{x[0] - 0.3, 5.0 * (x[1] - x[0]), 1.0};
    };
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        const LocalFit fit = FitWith(method, space, FunctionObjective(residuals));
        EXPECT_NEAR(fit.best.point[0], 0.3, 1e-5);
        EXPECT_NEAR(fit.best.point[1], 0.3, 1e-5);
    }
}

// A scale as large as the room between the bounds.
TEST(LocalFits, FindTheWayInANarrowRoom) {
    std::vector<FitParameter> parameters = {{"a", 0.02, -0.05, 0.05, ""}, {"b", 0.04, -0.05, 0.05, ""}};
    for (FitParameter& parameter : parameters) parameter.scale = 0.1;
    const ParameterSpace space(parameters);
    const auto residuals = [](const FitPoint& x) { return std::vector{x[0] - 0.01, 3.0 * (x[1] - x[0])}; };
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        const LocalFit fit = FitWith(method, space, FunctionObjective(residuals));
        ASSERT_TRUE(IsConverged(fit.stop)) << fit.detail;
        EXPECT_NEAR(fit.best.point[1], 0.01, 1e-6);
    }
}

TEST(LocalFits, HoldAndRestrain) {
    // One measurement, a + b = 3, and a restraint a = 1 +- 0.5: together they are met exactly.
    std::vector<FitParameter> parameters = {{"a", 0.0, -5.0, 5.0, "", Restraint{1.0, 0.5}},
                                            {"b", 1.0, -5.0, 5.0, ""}};
    const auto residuals = [](const FitPoint& x) { return std::vector{x[0] + x[1] - 3.0}; };
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        const ParameterSpace space(parameters);
        LocalFitSettings settings = kSharp;
        EXPECT_NEAR(FitWith(method, space, FunctionObjective(residuals)).best.point[1], 2.0, 1e-5);
        // b held at 1: (a - 2)^2 + 4 (a - 1)^2 has its minimum at 1.2.
        settings.isHeld = {false, true};
        const LocalFit fit = FitWith(method, space, FunctionObjective(residuals), settings);
        EXPECT_NEAR(fit.best.point[0], 1.2, 1e-5);
        EXPECT_EQ(fit.best.point[1], 1.0);
    }
}

TEST(LocalFits, TellWhyTheyEnd) {
    const ParameterSpace space = Cube(2, -1.2, -3.0, 3.0);
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        LocalFitSettings settings = kSharp;
        settings.mostEvaluations = 10;
        const LocalFit cut = FitWith(method, space, FunctionObjective(Rosenbrock), settings);
        EXPECT_EQ(cut.stop, FitStop::kLimit);
        EXPECT_LE(cut.evaluations, 10);

        const LocalFit bad =
            FitWith(method, space, FunctionObjective([](const FitPoint&) -> std::vector<double> {
                        throw ZfError("atoms collide");
                    }));
        EXPECT_EQ(bad.stop, FitStop::kFailed);
        EXPECT_EQ(bad.detail, "atoms collide");
        EXPECT_TRUE(bad.best.point.empty());

        FunctionObjective interrupted(Rosenbrock);
        interrupted.interruptAt = 8;
        FitProblem problem(space, interrupted);
        const LocalFit fit = method(problem, space.Start(), kSharp);
        EXPECT_EQ(fit.stop, FitStop::kInterrupted);
        EXPECT_FALSE(fit.best.point.empty());
    }
}

// The minimum of Rosenbrock's valley from a start beside which nothing can be calculated, and past a hole.
TEST(LocalFits, GetAroundFailures) {
    const ParameterSpace space({{"a", -1.2, -3.0, 3.0, ""}, {"b", 1.0, -3.0, 3.0, ""}});
    const auto residuals = [](const FitPoint& x) {
        if (x[0] > -1.2 && x[0] < -1.1999) throw ZfError("beside the start");
        if (std::hypot(x[0] - 0.2, x[1] - 0.7) < 0.5) throw ZfError("in the hole");
        return Rosenbrock(x);
    };
    for (const Method method : {FitByGaussNewton, FitWithoutDerivatives}) {
        const LocalFit fit = FitWith(method, space, FunctionObjective(residuals));
        EXPECT_TRUE(IsConverged(fit.stop)) << WordFor(fit.stop) << ' ' << fit.detail;
        EXPECT_NEAR(fit.best.point[0], 1.0, 1e-3);
        EXPECT_NEAR(fit.best.point[1], 1.0, 1e-3);
    }
}

}  // namespace
