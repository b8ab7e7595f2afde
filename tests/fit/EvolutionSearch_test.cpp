#include "fit/EvolutionSearch.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "Objectives.h"

namespace {

constexpr EvolutionSettings kSharp = {
    .mostEvaluations = 100000, .restarts = 0, .stepTolerance = 1e-10, .decreaseTolerance = 1e-14};

std::vector<double> Sphere(const FitPoint& x) {
    return x;
}

/// Axes of the misfit from 1 to 10^6, turned against those of the parameters.
std::vector<double> Ellipsoid(const FitPoint& x) {
    std::vector<double> residuals;
    for (std::size_t i = 0; i < x.size(); ++i) {
        double along = 0.0;  // on an orthonormal cosine basis
        for (std::size_t j = 0; j < x.size(); ++j)
            along += x[j] * std::cos(M_PI * (double(j) + 0.5) * double(i) / double(x.size()));
        along *= std::sqrt((i == 0 ? 1.0 : 2.0) / double(x.size()));
        residuals.push_back(std::pow(1e3, double(i) / double(x.size() - 1)) * along);
    }
    return residuals;
}

/// Ten to the power of the dimension of minima within +-5.12; the least is 0 at the origin.
std::vector<double> Rastrigin(const FitPoint& x) {
    std::vector<double> residuals;
    for (const double xi : x)
        residuals.push_back(std::sqrt(10.0 + xi * xi - 10.0 * std::cos(2.0 * M_PI * xi)));
    return residuals;
}

/// Evaluations until the misfit is below `target`, or the most if it never is.
int EvaluationsTo(double target, const ParameterSpace& space, const FunctionObjective::Function& function,
                  EvolutionSettings settings, std::uint64_t seed) {
    settings.seed = seed;
    FunctionObjective objective(function);
    FitProblem problem(space, objective);
    EvolutionSearch search(space.ToUnit(space.Start()), settings);
    while (!search.IsDone()) {
        std::vector<double> misfits;
        for (const auto& unit : search.Ask())
            misfits.push_back(problem.EvaluateOne(space.FromUnit(unit)).misfit);
        search.Tell(misfits);
        for (const double misfit : misfits)
            if (misfit < target) return search.Evaluations();
    }
    return settings.mostEvaluations;
}

// The tutorial's strategy takes about these numbers; twice as many mean that something of it is broken.
TEST(EvolutionSearch, TakesTheEvaluationsThatItIsKnownFor) {
    for (const std::uint64_t seed : {1, 2, 3}) {
        EXPECT_LT(EvaluationsTo(1e-9, Cube(6, 2.0, -5.0, 3.0), Sphere, kSharp, seed), 1500);
        EXPECT_LT(EvaluationsTo(1e-9, Cube(6, 2.0, -5.0, 3.0), Ellipsoid, kSharp, seed), 6000);
        EXPECT_LT(EvaluationsTo(1e-9, Cube(2, -1.2, -3.0, 3.0), Rosenbrock, kSharp, seed), 1500);
    }
}

TEST(EvolutionSearch, FindsTheLeastOfManyMinimaByRestarts) {
    EvolutionSettings settings = kSharp;
    settings.restarts = 6;
    settings.stepTolerance = 1e-6;
    for (const std::uint64_t seed : {1, 2, 3})
        EXPECT_LT(EvaluationsTo(1e-6, Cube(4, 3.0, -5.12, 4.12), Rastrigin, settings, seed), 40000);
}

// The misfit has its minimum outside of the bounds, at a corner of them, or at a side of them.
TEST(EvolutionSearch, FindsMinimaAtBounds) {
    const ParameterSpace space(
        {{"a", 0.5, 0.2, 1.0, ""}, {"b", 0.5, -1.0, 1.0, ""}, {"c", 1.5, 1.0, 2.0, ""}});
    for (const double b : {0.1, 3.0}) {
        FunctionObjective objective([b](const FitPoint& x) {
            return std::vector{x[0] + 1.0, 3.0 * (x[1] - b), x[2] - 5.0};
        });
        FitProblem problem(space, objective);
        EvolutionSearch search(space.ToUnit(space.Start()), kSharp);
        const GlobalFit fit = SearchGlobally(problem, search);
        EXPECT_NEAR(fit.best.point[0], 0.2, 1e-7);
        EXPECT_NEAR(fit.best.point[1], std::min(b, 1.0), 1e-4);
        EXPECT_NEAR(fit.best.point[2], 2.0, 1e-7);
        EXPECT_EQ(fit.stop, FitStop::kRestarts);
        EXPECT_LT(search.Evaluations(), 4000);
    }
}

std::vector<Trial> AllTrials(const ParameterSpace& space, FitObjective& objective, EvolutionSearch& search,
                             int generations) {
    FitProblem problem(space, objective);
    std::vector<Trial> all;
    for (int i = 0; i < generations; ++i) {
        std::vector<FitPoint> points = search.Ask();
        for (FitPoint& point : points) point = space.FromUnit(point);
        std::vector<double> misfits;
        for (const Trial& trial : problem.Evaluate(points)) {
            misfits.push_back(trial.misfit);
            all.push_back(trial);
        }
        search.Tell(misfits);
    }
    return all;
}

TEST(EvolutionSearch, DependsOnItsSeedAlone) {
    const ParameterSpace space = Cube(3, 3.0, -5.12, 4.12);
    FunctionObjective objective(Rastrigin);
    EvolutionSettings settings;
    settings.restarts = 5;
    settings.stepTolerance = 1e-2;
    const std::vector<double> start = space.ToUnit(space.Start());
    EvolutionSearch first(start, settings);
    const std::vector<Trial> trials = AllTrials(space, objective, first, 120);  // restarts among them
    EvolutionSearch second(start, settings);
    second.Ask();  // what is asked for and not told does not count
    const std::vector<Trial> again = AllTrials(space, objective, second, 120);
    ASSERT_EQ(again.size(), trials.size());
    for (std::size_t i = 0; i < again.size(); ++i) EXPECT_EQ(again[i].point, trials[i].point) << i;

    settings.seed = 2;
    EvolutionSearch other(start, settings);
    EXPECT_NE(AllTrials(space, objective, other, 1)[0].point, trials[0].point);
}

TEST(EvolutionSearch, PassesOverFailures) {
    const ParameterSpace space = Cube(3, 2.0, -5.0, 3.0);
    FunctionObjective objective([](const FitPoint& x) {
        if (std::sin(7.0 * x[0] + 5.0 * x[1] + 3.0 * x[2]) > 0.3) throw ZfError("atoms collide");
        return x;
    });
    FitProblem problem(space, objective);
    EvolutionSearch search(space.ToUnit(space.Start()), kSharp);
    const GlobalFit fit = SearchGlobally(problem, search);
    EXPECT_LT(fit.best.misfit, 1e-12);

    FunctionObjective hopeless(
        [](const FitPoint&) -> std::vector<double> { throw ZfError("atoms collide"); });
    FitProblem none(space, hopeless);
    EvolutionSearch lost(space.ToUnit(space.Start()), {.mostEvaluations = 300});
    EXPECT_EQ(SearchGlobally(none, lost).stop, FitStop::kFailed);
}

TEST(EvolutionSearch, EndsAnInterruptedGenerationAsIfItHadNotBegun) {
    const ParameterSpace space = Cube(3, 2.0, -5.0, 3.0);
    FunctionObjective objective(Sphere);
    objective.interruptAt = 40;
    FitProblem problem(space, objective);
    EvolutionSearch search(space.ToUnit(space.Start()), {});
    const GlobalFit fit = SearchGlobally(problem, search);
    EXPECT_EQ(fit.stop, FitStop::kInterrupted);
    EXPECT_EQ(search.Evaluations(), 35);  // five generations of 7
}

}  // namespace
