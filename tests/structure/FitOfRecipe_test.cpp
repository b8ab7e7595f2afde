#include <gtest/gtest.h>
#include <omp.h>

#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
#include "recipe/RecipePlan.h"
#include "report/compare/PatternComparison.h"
#include "run/CarryOut.h"
#include "structure/CarryOutFit.h"
#include "structure/FitFiles.h"
#include "structure/SimulatedMeasurement.h"
#include "structure/StructureFit.h"

using namespace qvre;

namespace {

const std::string kCopper =
    "[cluster]\npreset = \"Cu\"\nemitter-layer = 2\natoms = 20\n"
    "[cluster.relax]\nd12 = \"d\"\n"
    "[phases]\nzero = -6\n"
    "[image]\nresolution = 5\n";

const std::string kParameter =
    "[parameters]\nd = { start = 1.75, lower = 1.4, upper = 2.2, unit = \"angstrom\" }\n";

const std::string kEmission = "[emission]\nlevel = \"3s\"\nkinetic = 150\n";

const std::string kSimulation =
    "[fit.simulate]\nrotation = 20\nphi = [0, 100]\nstep = 6\ncounts = 5000\n[fit.simulate.shake]\nd = "
    "0.15\n";

class FitOfRecipe : public testing::Test {
protected:
    std::string Recipe(const std::string& text) const { return folder_.Write("r.toml", text); }

    FitOptions Options(const std::string& recipe, const std::string& results) const {
        FitOptions options;
        options.recipe = recipe;
        options.folder = folder_.Path(results);
        options.simulates = true;
        return options;
    }

    /// The evaluations without their times.
    std::string Evaluations(const std::string& results) const {
        std::string text;
        std::istringstream lines(folder_.Read(results + "/" + fit_files::kEvaluations));
        for (std::string line; std::getline(lines, line);)
            text += line.substr(0, line.find_last_of(',', line.find_last_of(',') - 1)) + "\n";
        return text;
    }

    /// Directions with counts that no pattern has, to compare with.
    std::string Measured() const {
        std::string text = "theta,phi,intensity\n";
        for (int theta = 10; theta <= 60; theta += 5)
            for (int phi = 0; phi < 120; phi += 7)
                text += std::to_string(theta) + "," + std::to_string(phi) + "," +
                        std::to_string(1000 + (theta * phi) % 97) + "\n";
        return folder_.Write("measured.csv", text);
    }

    TempFolder folder_;
};

// The calculation in memory against that of a run, by files.
TEST_F(FitOfRecipe, AnEvaluationIsWhatARunCalculates) {
    Measured();
    const std::string compare = "[compare]\nmeasured = \"measured.csv\"\nrotate = true\n";
    const std::string cases[] = {
        kEmission + "[scattering]\nmethod = \"FULL\"\n[thermal]\ntemperature = 500\n",
        kEmission + "[scattering]\nmethod = \"MULTI\"\n[thermal]\ntemperature = [300, 900]\n",
        "[emission]\nlevel = \"2p\"\nphoton = \"1100 eV\"\nbinding = 932.5\nunpolarised-along = [1, 0, -1]\n"
        "[light]\nframe = \"analyser\"\n[scattering]\nmethod = \"SINGLE\"\n",
        "[emission]\nisotropic = true\nkinetic = 150\n[scattering]\nmethod = \"FULL\"\n",
    };
    for (const std::string& one : cases) {
        std::string text = kParameter + kCopper + one + compare;
        const bool hasLosses = one.find("MULTI") == std::string::npos;
        if (hasLosses) text.replace(text.find("resolution"), 0, "imfp = \"8 angstrom\"\n");
        const std::string recipe = Recipe(text);
        const FitPlan plan = PlanFit(recipe, {});
        StructureObjective objective(plan.space, MakeDataSets(plan, plan.space.Start()));
        const NamedValues values = {{"d", 1.75}};
        const FittedData fitted = objective.DataSets().front()->Fitted(values);

        std::filesystem::remove_all(folder_.Path("run"));
        const RunPlan run = PlanRecipe(recipe, {folder_.Path("run"), {}, values});
        CarryOut(run, false);
        CompareRequest request = run.comparison.request;
        request.second.image = folder_.Path("run/" + run.results.front().image);
        const CompareResult compared = ComparePatterns(request);
        // The files keep the atoms with few digits and the images as numbers of single precision.
        EXPECT_NEAR(fitted.r, compared.agreement.scaledR, 2e-5 * compared.agreement.scaledR) << one;
        EXPECT_NEAR(fitted.compared.setting.rotation, compared.setting.rotation, 0.02);
    }
}

TEST_F(FitOfRecipe, RecoversWhatWasPutIn) {
    const std::string recipe = Recipe("title = \"copper\"\n" + kParameter + kCopper + kEmission +
                                      "[compare]\nrotate = true\n[fit.derived]\nhalf = \"d/2\"\n" +
                                      kSimulation + "[fit.simulate.truth]\nd = 1.71\n");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(IsConverged(CarryOutFit(Options(recipe, "fit"))));
    const std::string told = testing::internal::GetCapturedStdout();
    EXPECT_NE(told.find("qvre 0.1.0: copper\n"), std::string::npos) << told;
    EXPECT_NE(told.find("\nd = 1.7"), std::string::npos) << told;
    EXPECT_NE(told.find("d: put in 1.71, begun at "), std::string::npos) << told;
    EXPECT_NE(told.find(", within the R level\n"), std::string::npos) << told;

    // The slab of the best structure, five layers at least.
    EXPECT_NE(folder_.Read("fit/best.cif").find("\nCu5 "), std::string::npos);

    FitPlan plan = PlanFit(recipe, {});
    const Simulation simulation = SimulateMeasurements(plan, 5, folder_.Path("fit"));
    for (const auto& [path, text] : simulation.files) folder_.Write("fit/simulated.csv", text);
    EXPECT_NEAR(std::abs(plan.space.parameters[0].start - simulation.truth[0]), 0.15, 1e-12);
    StructureObjective objective(plan.space, MakeDataSets(plan, plan.space.Start()));
    EvaluationTable table(folder_.Path("evaluations.csv"), plan.space, {"data"});
    StructureFit fit(plan, table);
    const FitReport report = fit.Run();
    ASSERT_TRUE(report.noise && report.noise->sigma[0]);
    EXPECT_LT(std::abs(report.best.point[0] - 1.71), 4.0 * *report.noise->sigma[0]);
    EXPECT_LT(*report.noise->sigma[0], 0.01);
    // The sigmas are those of the counts: the misfit is what noise leaves.
    EXPECT_NEAR(report.noise->chiSquared / report.noise->degreesOfFreedom, 1.0, 0.25);
    EXPECT_NEAR(
        std::remainder(objective.DataSets().front()->Fitted({{"d", 1.71}}).compared.setting.rotation - 20.0,
                       90.0),
        0.0, 0.3);
}

TEST_F(FitOfRecipe, GoesOnWhereItWasStoppedAndRefusesAnotherProblem) {
    const std::string text =
        kParameter + kCopper + kEmission +
        "[compare]\nrotate = true\n[fit]\nsearch = \"global\"\nminima = 1\nerrors = false\n" + kSimulation;
    FitOptions options = Options(Recipe(text), "fit");
    options.choices.evaluations = 12;
    options.choices.seed = 3;
    testing::internal::CaptureStdout();
    CarryOutFit(options);
    const std::string whole = Evaluations("fit");
    const std::string json = folder_.Read("fit/fit.json");
    // As a program leaves it that is killed within the line 9.
    const std::string table = folder_.Read("fit/evaluations.csv");
    std::size_t end = 0;
    for (int line = 0; line < 9; ++line) end = table.find('\n', end) + 1;
    folder_.Write("fit/evaluations.csv", table.substr(0, end + 5));
    CarryOutFit(options);
    EXPECT_EQ(Evaluations("fit"), whole);

    // With other numbers of threads the same to the last bit.
    const int threads = omp_get_max_threads();
    omp_set_num_threads(3);
    options.folder = folder_.Path("again");
    CarryOutFit(options);
    omp_set_num_threads(threads);
    EXPECT_EQ(Evaluations("again"), whole);

    std::string other = text;
    other.replace(other.find("atoms = 20"), 10, "atoms = 22");
    Recipe(other);
    const std::string refusal = ErrorText([&] { CarryOutFit(options); });
    EXPECT_EQ(
        refusal,
        folder_.Path("again") +
            " has the evaluations of another problem: \"atoms = 20\" became \"atoms = 22\"; name another "
            "folder with -o, or give --repeat to begin anew");
    options.repeatsAll = true;
    CarryOutFit(options);
    testing::internal::GetCapturedStdout();
    EXPECT_NE(Evaluations("again"), whole);
}

// What an evaluation takes from the one before has to be what it would have made itself.
TEST_F(FitOfRecipe, WhatIsKeptHangsOnNoParameter) {
    Measured();
    folder_.Write("fcc.cell",
                  "lengths a a a\natom Cu 0 0 0\natom Cu 0 1/2 1/2\natom Cu 1/2 0 1/2\natom Cu 1/2 1/2 0\n");
    const std::string text =
        "[parameters]\n"
        "a = { start = 3.6, lower = 3, upper = 4 }\n"
        "d = { start = 1.75, lower = 1.4, upper = 2.2 }\n"
        "energy = { start = 150, lower = 100, upper = 200 }\n"
        "turn = { start = 20, lower = 0, upper = 90 }\n"
        "zero = { start = -6, lower = -10, upper = -2 }\n"
        "T = { start = 300, lower = 100, upper = 900 }\n"
        "path = { start = 8, lower = 4, upper = 20 }\n"
        "offset = { start = 1, lower = -3, upper = 3 }\n"
        "[cluster]\ncell = \"fcc.cell\"\nemitter-layer = 2\natoms = 12\n[cluster.relax]\nd12 = \"d\"\n"
        "[emission]\nlevel = \"3s\"\nkinetic = \"energy\"\n"
        "polarisation = [\"sin(radians(turn))\", 0, \"cos(radians(turn))\"]\n"
        "[phases]\nzero = \"zero\"\n[thermal]\ntemperature = \"T\"\n"
        "[image]\nresolution = 10\nimfp = \"path angstrom\"\n"
        "[compare]\nmeasured = \"measured.csv\"\nrotate = true\ntheta-offset = "
        "\"offset\"\n[scattering]\nmethod = ";
    const FitPoint changes = {3.62, 1.8, 155.0, 30.0, -5.0, 500.0, 9.0, 0.5};
    for (const std::string method : {"\"FULL\"\n", "\"MULTI\"\n", "\"SINGLE\"\n"}) {
        const FitPlan plan = PlanFit(Recipe(text + method), {});
        const FitPoint start = plan.space.Start();
        StructureObjective kept(plan.space, MakeDataSets(plan, start));
        kept.KeepSettingsOf(start);
        const Evaluation first = kept.Evaluate({start}).front();
        for (std::size_t i = 0; i < changes.size(); ++i) {
            FitPoint point = start;
            point[i] = changes[i];
            StructureObjective fresh(plan.space, MakeDataSets(plan, start));
            fresh.KeepSettingsOf(start);
            const Evaluation evaluation = kept.Evaluate({point}).front();
            EXPECT_EQ(evaluation.failure, "");
            EXPECT_EQ(evaluation.residuals, fresh.Evaluate({point}).front().residuals)
                << method << plan.space.parameters[i].name;
            EXPECT_NE(evaluation.residuals, first.residuals) << method << plan.space.parameters[i].name;
        }
        EXPECT_EQ(kept.Evaluate({start}).front().residuals, first.residuals);
    }
}

TEST_F(FitOfRecipe, RefusesAnotherMeasurementAndTakesUpWhatOnlyTellsMore) {
    const std::string measured = Measured();
    const std::string text = kParameter + kCopper + kEmission +
                             "[compare]\nmeasured = \"measured.csv\"\n[scattering]\nmethod = \"SINGLE\"\n"
                             "[fit]\nevaluations = 4\nerrors = ";
    FitOptions options = Options(Recipe(text + "false\n"), "fit");
    options.simulates = false;
    testing::internal::CaptureStdout();
    CarryOutFit(options);
    const std::string searched = Evaluations("fit");
    Recipe(text + "true\n[fit.derived]\nhalf = \"d/2\"\n");
    CarryOutFit(options);
    EXPECT_EQ(Evaluations("fit").substr(0, searched.size()), searched);
    folder_.Write("measured.csv", folder_.Read("measured.csv") + "62,3,1000\n");
    EXPECT_EQ(ErrorText([&] { CarryOutFit(options); }),
              folder_.Path("fit") + " has the evaluations of another problem: the file " + measured +
                  " has changed; name another folder with -o, or give --repeat to begin anew");
    testing::internal::GetCapturedStdout();
}

// Those of files keep 6 digits, or 0.1 eV of what a photon frees: steps that no slope survives.
TEST_F(FitOfRecipe, EnergiesChangeSmoothly) {
    Measured();
    const std::string emission[] = {"level = \"3s\"\nkinetic = \"energy\"\n",
                                    "level = \"3s\"\nphoton = 262\nbinding = 122\nfermi = \"energy - 140\"\n",
                                    "isotropic = true\nkinetic = \"energy\"\n"};
    for (const std::string& one : emission) {
        std::string text = "[parameters]\nenergy = { start = 150, lower = 100, upper = 200 }\n" + kCopper +
                           "[emission]\n" + one +
                           "[compare]\nmeasured = \"measured.csv\"\n[scattering]\nmethod = \"SINGLE\"\n";
        text.replace(text.find("\"d\""), 3, "1.75");
        const FitPlan plan = PlanFit(Recipe(text), {});
        StructureObjective objective(plan.space, MakeDataSets(plan, plan.space.Start()));
        const auto evaluations = objective.Evaluate({{150.0}, {150.0001234567}, {150.0002469134}});
        EXPECT_EQ(evaluations[1].failure, "");
        const auto change = [&](std::size_t i) {
            return evaluations[i].residuals.front() - evaluations[0].residuals.front();
        };
        EXPECT_NEAR(change(2) / change(1), 2.0, 0.1) << one;
    }
}

// Planning: what comes out when something that is held is not what one thinks.
TEST_F(FitOfRecipe, SimulatesWithTrueValuesOfWhatIsHeld) {
    const std::string text = "[parameters]\nTD = 250\nd = { start = 1.75, lower = 1.4, upper = 2.2 }\n" +
                             kCopper + kEmission + "[thermal]\ndebye = { Cu = \"TD\" }\n" + kSimulation;
    FitPlan usual = PlanFit(Recipe(text), {});
    FitPlan warm = PlanFit(Recipe(text + "[fit.simulate.truth]\nTD = 150\n"), {});
    const Simulation a = SimulateMeasurements(usual, 5, "folder");
    const Simulation b = SimulateMeasurements(warm, 5, "folder");
    EXPECT_EQ(a.truth, b.truth);
    EXPECT_NE(a.files.begin()->second, b.files.begin()->second);
    EXPECT_EQ(warm.space.parameters.size(), 1U);
}

TEST_F(FitOfRecipe, LooksForTheTruthBeyondTheValleyOfTheStart) {
    std::string text =
        kParameter + kCopper +
        "[emission]\nlevel = \"3s\"\nkinetic = 300\n[compare]\nrotate = true\n[fit]\nerrors = false\n" +
        kSimulation;
    text.replace(text.find("lower = 1.4, upper = 2.2"), 24, "lower = 1.2, upper = 2.6");
    text.replace(text.rfind("0.15"), 4, "0.6 ");
    const std::string recipe = Recipe(text);
    const auto found = [&](FitSearch search) {
        FitPlan plan = PlanFit(recipe, {search, 1, 8});
        for (const auto& [path, table] : SimulateMeasurements(plan, 1, folder_.Path("")).files)
            folder_.Write("simulated.csv", table);
        EvaluationTable table(folder_.Path(std::string(WordFor(search)) + ".csv"), plan.space, {"data"});
        StructureFit fit(plan, table);
        return fit.Run().best.point.front();
    };
    EXPECT_GT(std::abs(found(FitSearch::kLocal) - 1.75), 0.2);
    EXPECT_NEAR(found(FitSearch::kGlobal), 1.75, 0.01);
    EXPECT_NEAR(found(FitSearch::kSobol), 1.75, 0.01);
}

TEST_F(FitOfRecipe, ComparesSeveralPatternsByTheirWeights) {
    Measured();
    const std::string text = kParameter + kCopper +
                             "[emission]\nkinetic = 150\n[compare]\nmeasured = \"measured.csv\"\n"
                             "[[data]]\nname = \"3s\"\nemission = { level = \"3s\" }\n"
                             "[[data]]\nname = \"2p\"\nweight = 3\nemission = { level = \"2p\" }\ncompare = "
                             "{ theta = [20, 40] }\n";
    const FitPlan plan = PlanFit(Recipe(text), {});
    StructureObjective objective(plan.space, MakeDataSets(plan, plan.space.Start()));
    ASSERT_EQ(objective.DataSets().size(), 2U);
    const FitDataSet& s = *objective.DataSets()[0];
    const FitDataSet& p = *objective.DataSets()[1];
    EXPECT_EQ(p.Name(), "2p");
    EXPECT_LT(p.IndependentData(), s.IndependentData());
    const Evaluation evaluation = objective.Evaluate({{1.8}}).front();
    ASSERT_EQ(evaluation.failure, "");
    const double weightS = s.IndependentData();
    const double weightP = 3.0 * p.IndependentData();
    EXPECT_NEAR(evaluation.r,
                (weightS * evaluation.dataSetR[0] + weightP * evaluation.dataSetR[1]) / (weightS + weightP),
                1e-12);
    // The misfit of a data set is about N R/0.1, and its weight multiplies it.
    double misfit = 0.0;
    for (std::size_t i = 198; i < evaluation.residuals.size(); ++i)
        misfit += evaluation.residuals[i] * evaluation.residuals[i];
    EXPECT_NEAR(misfit, weightP * evaluation.dataSetR[1] / 0.1, 0.15 * misfit);

    EXPECT_EQ(ErrorText([&] { PlanRecipe(folder_.Path("r.toml"), {}); }),
              folder_.Path("r.toml") + ": the recipe has the data sets 3s, 2p: choose one");
    EXPECT_EQ(PlanRecipe(folder_.Path("r.toml"), {{}, {}, {}, "2p"}).comparison.request.thetaMax, 40.0);
}

TEST_F(FitOfRecipe, FollowsItsSettings) {
    Measured();
    const std::string text =
        kParameter + kCopper + kEmission + "[compare]\nmeasured = \"measured.csv\"\n[fit]\nerrors = false\n";
    const auto fitted = [&](const std::string& keys) {
        const FitPlan plan = PlanFit(Recipe(text + keys), {});
        std::filesystem::remove(folder_.Path("evaluations.csv"));
        EvaluationTable table(folder_.Path("evaluations.csv"), plan.space, {"data"});
        StructureFit fit(plan, table);
        return std::pair(fit.Run(), fit.Objective().DataSets().front()->Fitted({{"d", 1.8}}));
    };
    const auto [usual, free] = fitted("");
    const auto [own, fixed] = fitted("amplitude = \"fixed\"\nindependent-data = 33\nmethod = \"bobyqa\"\n");
    EXPECT_EQ(free.r, free.compared.agreement.scaledR);
    EXPECT_EQ(fixed.r, fixed.compared.agreement.R);
    EXPECT_NE(free.amplitude, 1.0);
    EXPECT_EQ(fixed.amplitude, 1.0);
    EXPECT_EQ(own.independentData, 33.0);
    EXPECT_NE(usual.independentData, 33.0);
    // Without derivatives there are no points a thousandth of an angstrom apart.
    const auto closest = [](const FitReport& report) {
        double least = 1.0;
        for (std::size_t i = 1; i < 4; ++i)
            least = std::min(least, std::abs(report.records[i].point[0] - report.records[0].point[0]));
        return least;
    };
    EXPECT_LT(closest(usual), 0.002);
    EXPECT_GT(closest(own), 0.002);
}

TEST_F(FitOfRecipe, AStructureThatCannotBeIsPassedOver) {
    Measured();
    std::string text = kParameter + kCopper + kEmission + "[compare]\nmeasured = \"measured.csv\"\n";
    text.replace(text.find("lower = 1.4"), 11, "lower = -1");
    const FitPlan plan = PlanFit(Recipe(text), {});
    StructureObjective objective(plan.space, MakeDataSets(plan, plan.space.Start()));
    const std::vector<Evaluation> evaluations = objective.Evaluate({{1.7}, {-0.5}, {1.8}});
    EXPECT_EQ(evaluations[0].failure, "");
    EXPECT_NE(evaluations[1].failure.find("The spacing d12 would be -0.5 angstrom"), std::string::npos)
        << evaluations[1].failure;
    EXPECT_EQ(evaluations[2].failure, "");
}

}  // namespace
