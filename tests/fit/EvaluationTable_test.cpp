#include "fit/EvaluationTable.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "Objectives.h"
#include "TempFolder.h"

namespace {

void FillTable(const std::string& path, const ParameterSpace& space, int kept, int first, int last) {
    FunctionObjective objective([](const FitPoint& x) {
        if (x[0] > 0.5) throw ZfError("atoms 3, 7 collide\n#1");
        return std::vector{x[0] / 3.0, x[1]};
    });
    EvaluationTable table(path, space, {"map"}, kept);
    FitProblem problem(space, objective, &table);
    for (int i = first; i <= last; ++i) {
        problem.generation = i;
        problem.Evaluate({{0.1 * i, 1.0 / 3.0}, {0.2 * i, -1e-7 / i}});
    }
}

TEST(EvaluationTable, IsReadBackToTheLastBit) {
    const TempFolder folder;
    const std::string path = folder.Path("evaluations.csv");
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FillTable(path, space, -1, 1, 3);
    const std::string text = folder.Read("evaluations.csv");
    EXPECT_TRUE(text.starts_with(
        "number,generation,a,b,misfit,R,R map,seconds,failure\n1,1,0.1,0.3333333333333333,"));
    EXPECT_NE(text.find(",,,,0.000,atoms 3; 7 collide ;1\n"), std::string::npos) << text;

    const EvaluationTable table(path, space, {"map"});
    EXPECT_EQ(folder.Read("evaluations.csv"), text);
    ASSERT_EQ(table.records.size(), 6U);
    EXPECT_EQ(table.records[0].point, (FitPoint{0.1, 1.0 / 3.0}));
    EXPECT_EQ(table.records[0].misfit, 0.1 / 3.0 * (0.1 / 3.0) + 1.0 / 3.0 * (1.0 / 3.0));
    EXPECT_EQ(table.records[2].generation, 2);
    EXPECT_EQ(table.records[5].failure, "atoms 3; 7 collide ;1");
    EXPECT_EQ(table.records[5].misfit, INFINITY);
}

TEST(EvaluationTable, GoesOnBehindTheLastWholeGeneration) {
    const TempFolder folder;
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    FillTable(folder.Path("whole.csv"), space, -1, 1, 3);
    const std::string whole = folder.Read("whole.csv");
    // Killed in the middle of any line of the third generation, whose number the search does not know.
    for (std::size_t length = whole.find("\n5,3,") + 1; length <= whole.size(); length += 3) {
        folder.Write("cut.csv", whole.substr(0, length));
        FillTable(folder.Path("cut.csv"), space, 4, 3, 3);
        EXPECT_EQ(folder.Read("cut.csv"), whole) << length;
    }
}

TEST(EvaluationTable, RefusesThatOfAnotherFit) {
    const TempFolder folder;
    const ParameterSpace space = Cube(2, 0.0, -2.0, 2.0);
    const std::string path = folder.Path("evaluations.csv");
    FillTable(path, space, -1, 1, 2);
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, Cube(1, 0.0, -2.0, 2.0), {"map"}); }),
              path +
                  ": it belongs to another fit: its columns are number,generation,a,b,misfit,R,R "
                  "map,seconds,failure "
                  "instead of number,generation,a,misfit,R,R map,seconds,failure");
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, space, {"map"}, 9); }),
              path + ": it has 4 evaluations instead of 9");
    const std::string text = folder.Read("evaluations.csv");
    folder.Write("evaluations.csv", text + "7,3,0,0,0,0,0,0,\n");
    EXPECT_EQ(ErrorText([&] { EvaluationTable(path, space, {"map"}); }), path + ": evaluation 5 is missing");
    folder.Write("evaluations.csv", text + "5,3,x,0,0,0,0,0,\n");
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
