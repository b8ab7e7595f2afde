#include "fit/Rivals.h"

#include <gtest/gtest.h>

#include "Objectives.h"
#include "fit/SobolPoints.h"

namespace {

/// Minima at x = 1 and -1, y = 0, the one at -1 higher by about 2 `tilt`.
FunctionObjective TwoWells(double tilt) {
    return FunctionObjective([tilt](const FitPoint& p) {
        return std::vector{p[0] * p[0] - 1.0, p[1], std::sqrt(1.0 + tilt * (1.0 - p[0]))};
    });
}

std::vector<Trial> Minima(FunctionObjective& objective) {
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FitProblem problem(space, objective);
    std::vector<EvaluationRecord> records;
    for (const auto& unit : SobolPoints(2, 200, 1)) {
        const Trial trial = problem.EvaluateOne(space.FromUnit(unit));
        EvaluationRecord& record = records.emplace_back();
        record.point = trial.point;
        record.misfit = trial.misfit;
    }
    const std::vector<FitPoint> starts = ValleyPoints(space, records, 10);
    EXPECT_LE(starts.size(), 6U);
    // A second start in each well is found to be no second minimum.
    std::vector<FitPoint> more = starts;
    more.push_back({1.8, 1.5});
    more.push_back({-1.8, -1.5});
    return DistinctMinima(problem, more,
                          [&](const FitPoint& start) { return FitByGaussNewton(problem, start); });
}

TEST(Rivals, AreTheOtherMinimaWithinTheLevel) {
    for (const double tilt : {0.02, 0.3}) {
        FunctionObjective objective = TwoWells(tilt);
        const std::vector<Trial> minima = Minima(objective);
        ASSERT_EQ(minima.size(), 2U);
        EXPECT_NEAR(minima[0].point[0], 1.0, 0.05);
        EXPECT_NEAR(minima[1].point[0], -1.0, 0.05);
        // R: 1 and about 1 + 2 tilt; the level with 200 data is 1.1.
        EXPECT_EQ(RivalsOf(minima, 200.0).size(), tilt < 0.05 ? 1U : 0U);
    }
    EXPECT_TRUE(RivalsOf({}, 200.0).empty());
}

// Along a slope none but its lowest point is better than its neighbours, not even where few points are worse.
TEST(Rivals, AreNotSearchedForOnTheHighGround) {
    const ParameterSpace space = Cube(1, 0.0, -2.0, 2.0);
    std::vector<EvaluationRecord> records;
    for (const double x : {-1.0, 1.9, 0.0, 1.0, 1.5}) {
        EvaluationRecord& record = records.emplace_back();
        record.point = {x};
        record.misfit = 3.0 + x;
    }
    EXPECT_EQ(ValleyPoints(space, records, 10), (std::vector<FitPoint>{{-1.0}}));
}

// Fits that end on their way leave two far points in one valley: no wall between them, no second minimum.
TEST(Rivals, AreNotTheEndsOfOneValley) {
    FunctionObjective objective([](const FitPoint& p) { return std::vector{0.02 * p[0], p[1], 1.0}; });
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FitProblem problem(space, objective);
    const LocalFitSettings early = {.mostEvaluations = 3};
    EXPECT_EQ(DistinctMinima(problem, {{1.5, 0.1}, {-1.5, 0.1}},
                             [&](const FitPoint& start) { return FitByGaussNewton(problem, start, early); })
                  .size(),
              1U);
}

}  // namespace
