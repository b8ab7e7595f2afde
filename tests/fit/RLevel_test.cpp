#include "fit/RLevel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Objectives.h"
#include "fit/FitErrors.h"

namespace {

/// R = R_min + x^2 + y^2 + 2 c x y + k (x^4) about (0.3, -0.1); with y optimised R_min + (1 - c^2) x^2 + k
/// x^4.
struct Bowl {
    double least = 0.08;
    double coupling = 0.8;
    double quartic = 0.0;

    std::vector<double> operator()(const FitPoint& point) const {
        const double x = point[0] - 0.3;
        const double y = point[1] + 0.1;
        return {y + coupling * x, std::sqrt(1.0 - coupling * coupling) * x, std::sqrt(quartic) * x * x,
                std::sqrt(least)};
    }
};

constexpr double kData = 72.0;

struct Profiled {
    RLevelError error;
    int evaluations = 0;
};

Profiled Profile(const ParameterSpace& space, const FunctionObjective::Function& function,
                 const FitPoint& best, double firstStep) {
    FunctionObjective objective(function);
    FitProblem problem(space, objective);
    const Trial trial = problem.EvaluateOne(best);
    return {RLevelErrorAt(problem, trial, 0, kData, firstStep), problem.evaluations};
}

TEST(RLevelError, IsTheClosedFormOfAParabola) {
    const ParameterSpace space = Cube(2, 0.0, -5.0, 5.0);
    // sqrt(2/72) = 1/6
    EXPECT_DOUBLE_EQ(RLevel(0.08, kData), 0.08 * 7.0 / 6.0);
    const double width = std::sqrt(0.08 / 6.0) / 0.6;
    for (const double firstStep : {0.0, 0.001, 0.1, 20.0}) {
        const Profiled of = Profile(space, Bowl(), {0.3, -0.1}, firstStep);
        EXPECT_NEAR(*of.error.lower, 0.3 - width, 0.01 * width) << firstStep;
        EXPECT_NEAR(*of.error.upper, 0.3 + width, 0.01 * width) << firstStep;
        EXPECT_LT(of.evaluations, 110) << firstStep;
        EXPECT_FALSE(of.error.better);
    }
    // The other parameter follows along the valley, as near as the steps of fits are asked to be.
    for (const ProfilePoint& point : Profile(space, Bowl(), {0.3, -0.1}, 0.1).error.profile)
        EXPECT_NEAR(point.trial.point[1] + 0.1, -0.8 * (point.value - 0.3), 1e-4);
}

TEST(RLevelError, FollowsAProfileThatIsNoParabola) {
    // 0.36 d^2 + 40 d^4 = 0.08/6
    const double square = (-0.36 + std::sqrt(0.36 * 0.36 + 160.0 * 0.08 / 6.0)) / 80.0;
    const Profiled of = Profile(Cube(2, 0.0, -5.0, 5.0), Bowl{.quartic = 40.0}, {0.3, -0.1}, 0.02);
    EXPECT_NEAR(*of.error.upper, 0.3 + std::sqrt(square), 0.01 * std::sqrt(square));
}

TEST(RLevelError, IsOneSidedWithItsReason) {
    const auto profile = [](double lower, double upper, const Bowl& bowl, double x) {
        const ParameterSpace space({{"d", x, lower, upper, ""}, {"e", 0.0, -5.0, 5.0, ""}});
        return Profile(space, bowl, {x, -0.1 - 0.8 * (x - 0.3)}, 0.05).error;
    };
    const RLevelError near = profile(0.25, 2.0, Bowl(), 0.3);
    EXPECT_FALSE(near.lower);
    EXPECT_EQ(near.lowerReason, "R stays within the level up to its lower bound");
    EXPECT_TRUE(near.upper);
    const RLevelError at = profile(-2.0, 0.3, Bowl(), 0.3);
    EXPECT_EQ(at.upperReason, "it is at its upper bound");
    EXPECT_TRUE(at.lower);
    EXPECT_EQ(profile(-2.0, 2.0, Bowl{.least = 0.0}, 0.3).upperReason,
              "R is 0 at the minimum, and no level lies above it");
    // What was taken for the best is beside the minimum.
    const RLevelError early = profile(-2.0, 2.0, Bowl(), 0.4);
    ASSERT_TRUE(early.better);
    EXPECT_LT(early.better->misfit, 0.08 + 0.36 * 0.01);
}

TEST(RLevelError, EndsWhereTheProfileFails) {
    const ParameterSpace space = Cube(2, 0.0, -5.0, 5.0);
    const auto function = [](const FitPoint& point) {
        if (point[0] > 0.4) throw ZfError("atoms collide");
        return Bowl()(point);
    };
    const RLevelError error = Profile(space, function, {0.3, -0.1}, 0.15).error;
    EXPECT_TRUE(error.lower);
    EXPECT_FALSE(error.upper);
    EXPECT_EQ(error.upperReason.substr(error.upperReason.find(':')), ": atoms collide");
}

// Both errors of one minimum: their ratio is (2N)^(1/4) but for the number of parameters.
TEST(RLevelError, IsWiderThanTheNoise) {
    std::vector<double> noise;
    for (int i = 0; i < 72; ++i) noise.push_back(i % 2 == 0 ? 0.1 : -0.1);
    const ParameterSpace space = Cube(1, 0.0, -5.0, 5.0);
    FunctionObjective objective(
        [&](const FitPoint& x) {
            std::vector<double> residuals = noise;
            for (double& residual : residuals) residual += x[0];
            return residuals;
        },
        50.0);
    FitProblem problem(space, objective);
    const Trial best = problem.EvaluateOne({0.0});
    const double sigma = *NoiseErrorsAt(problem, best).sigma[0];
    EXPECT_NEAR(sigma, 0.1 / std::sqrt(71.0), 1e-8);
    const RLevelError error = RLevelErrorAt(problem, best, 0, kData, sigma);
    EXPECT_NEAR(*error.upper / sigma, RLevelInNoiseErrors(kData, 71.0), 0.01 * 3.46);
    EXPECT_NEAR(RLevelInNoiseErrors(kData, kData), std::pow(2.0 * kData, 0.25), 1e-12);
}

}  // namespace
