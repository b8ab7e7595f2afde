#include "fit/EvaluationTable.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "Objectives.h"
#include "TempFolder.h"
#include "fit/EvolutionSearch.h"
#include "fit/LocalFit.h"

namespace {

void FillTable(const std::string& path, const ParameterSpace& space) {
    FunctionObjective objective([](const FitPoint& x) {
        if (x[0] > 0.5) throw ZfError("atoms 3, 7 collide\n#1");
        return std::vector{x[0] / 3.0, x[1]};
    });
    EvaluationTable table(path, space, {"map"});
    FitProblem problem(space, objective, &table);
    for (int i = 1; i <= 3; ++i) {
        problem.generation = i;
        problem.Evaluate({{0.1 * i, 1.0 / 3.0}, {0.2 * i, -1e-7 / i}});
    }
}

TEST(EvaluationTable, IsReadBackToTheLastBit) {
    const TempFolder folder;
    const std::string path = folder.Path("evaluations.csv");
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FillTable(path, space);
    const std::string text = folder.Read("evaluations.csv");
    EXPECT_TRUE(text.starts_with(
        "number,generation,a,b,misfit,R,R map,seconds,failure\n1,1,0.1,0.3333333333333333,"));
    EXPECT_NE(text.find(",,,,0.000,atoms 3; 7 collide ;1\n"), std::string::npos) << text;

    EvaluationTable table(path, space, {"map"});
    const auto trials = table.Repeat({{0.1, 1.0 / 3.0}, {0.2, -1e-7}}, true);
    ASSERT_TRUE(trials);
    EXPECT_EQ((*trials)[0].evaluation.residuals, (std::vector{0.1 / 3.0, 1.0 / 3.0}));
    EXPECT_EQ((*trials)[0].misfit, 0.1 / 3.0 * (0.1 / 3.0) + 1.0 / 3.0 * (1.0 / 3.0));
    EXPECT_FALSE(table.Repeat({{0.2, 1.0 / 3.0}, {0.4, 0.0}}, true));
    EXPECT_TRUE(table.Repeat({{0.2, 1.0 / 3.0}, {0.4, -0.5e-7}}, true));
    ASSERT_TRUE(table.Repeat({{0.1 * 3, 1.0 / 3.0}, {0.2 * 3, -1e-7 / 3}}, true));
    EXPECT_EQ(table.records.back().failure, "atoms 3; 7 collide ;1");
    EXPECT_EQ(table.records.back().misfit, INFINITY);
    EXPECT_EQ(table.records.back().generation, 3);
    EXPECT_FALSE(table.Repeat({{0.1, 0.1}}, true));
    EXPECT_EQ(folder.Read("evaluations.csv"), text);
}

/// A search, then down the valley of its best point.
FitPoint BestOf(const ParameterSpace& space, const std::string& path, FunctionObjective& objective) {
    EvaluationTable table(path, space, {"map"});
    FitProblem problem(space, objective, &table);
    EvolutionSearch search(space.ToUnit(space.Start()), {.mostEvaluations = 40});
    const GlobalFit global = SearchGlobally(problem, search);
    if (global.stop == FitStop::kInterrupted) return {};
    const LocalFit local = FitByGaussNewton(problem, global.best.point);
    if (local.stop == FitStop::kInterrupted) return {};
    table.End();
    return local.best.point;
}

TEST(EvaluationTable, LetsAFitGoOnWhereItWasStopped) {
    const TempFolder folder;
    const ParameterSpace space = Cube(2, 1.5, -2.0, 2.0);
    const std::string path = folder.Path("fit.csv");
    FunctionObjective whole(Rosenbrock);
    whole.interruptAt = 100000;
    const FitPoint best = BestOf(space, folder.Path("whole.csv"), whole);
    const std::string text = folder.Read("whole.csv");
    ASSERT_GT(whole.asked, 50);
    for (int at = 3; at < whole.asked; at += 9) {
        folder.Write("fit.csv", "");
        FunctionObjective stopped(Rosenbrock);
        stopped.interruptAt = at;
        EXPECT_EQ(BestOf(space, path, stopped), FitPoint());
        FunctionObjective rest(Rosenbrock);
        rest.interruptAt = 100000;
        EXPECT_EQ(BestOf(space, path, rest), best) << at;
        EXPECT_EQ(folder.Read("fit.csv"), text);
        // But for the batch in which it was stopped, and residuals that the search does not keep.
        EXPECT_LE(rest.asked, whole.asked - at + 8);
    }
}

TEST(EvaluationTable, TakesNothingOfABatchThatIsNotWhole) {
    const TempFolder folder;
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FillTable(folder.Path("evaluations.csv"), space);
    const std::string text = folder.Read("evaluations.csv");
    const std::string residuals = folder.Read(".evaluations.residuals");
    // Killed while it wrote any of the two files.
    for (std::size_t cut = 1; cut < 60; cut += 7) {
        folder.Write("evaluations.csv", text.substr(0, text.size() - cut));
        FillTable(folder.Path("evaluations.csv"), space);
        EXPECT_EQ(folder.Read("evaluations.csv"), text) << cut;
        EXPECT_EQ(folder.Read(".evaluations.residuals"), residuals) << cut;
        folder.Write(".evaluations.residuals", residuals.substr(0, residuals.size() - cut));
        FillTable(folder.Path("evaluations.csv"), space);
        EXPECT_EQ(folder.Read(".evaluations.residuals"), residuals) << cut;
    }
}

TEST(EvaluationTable, TellsHowManyDataAFitHas) {
    const TempFolder folder;
    const ParameterSpace space({{"a", 0.0, -2.0, 2.0, "", Restraint{0.0, 1.0}}, {"b", 0.0, -2.0, 2.0, ""}});
    FillTable(folder.Path("evaluations.csv"), space);
    FunctionObjective other([](const FitPoint&) { return std::vector{1.0, 1.0, 1.0}; });
    EvaluationTable table(folder.Path("evaluations.csv"), space, {"map"});
    FitProblem problem(space, other, &table);
    EXPECT_FALSE(problem.Evaluate({{0.1, 1.0 / 3.0}, {0.2, -1e-7}})[0].HasFailed());
    EXPECT_EQ(problem.EvaluateOne({1.0, 1.0}).evaluation.failure, "it has 3 data instead of 2");
}

TEST(EvaluationTable, RefusesThatOfAnotherFit) {
    const TempFolder folder;
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    const std::string path = folder.Path("evaluations.csv");
    FillTable(path, space);
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, Cube(1, 0.0, -2.0, 2.0), {"map"}); }),
              path +
                  ": it belongs to another fit: its columns are number,generation,a,b,misfit,R,R "
                  "map,seconds,failure "
                  "instead of number,generation,a,misfit,R,R map,seconds,failure");
    const std::string text = folder.Read("evaluations.csv");
    folder.Write("evaluations.csv", text + "8,3,0,0,0,0,0,0,\n");
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, space, {"map"}); }), path + ": evaluation 7 is missing");
    folder.Write("evaluations.csv", text + "7,3,x,0,0,0,0,0,\n");
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, space, {"map"}); }), path + ": a: \"x\" is no number");
}

TEST(FitProblem, TakesWhatIsNoResultForAFailure) {
    const ParameterSpace space = Cube(1, 0.0, -2.0, 2.0);
    FunctionObjective objective([](const FitPoint& x) {
        if (x[0] > 1.0) return std::vector{NAN, 1.0};
        if (x[0] < -1.0) return std::vector{1.0};
        return std::vector{x[0], 1.0};
    });
    FitProblem problem(space, objective);
    const std::vector<Trial> trials = problem.Evaluate({{0.5}, {1.5}, {-1.5}});
    EXPECT_EQ(trials[0].misfit, 1.25);
    EXPECT_EQ(trials[1].evaluation.failure, "its result is not finite");
    EXPECT_EQ(trials[2].evaluation.failure, "it has 1 data instead of 2");
    EXPECT_EQ(trials[2].misfit, INFINITY);
}

}  // namespace
