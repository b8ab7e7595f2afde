// What the searches of a fit are worth: recipes are simulated and fitted with several seeds, by both global
// searches and different numbers of evaluations. The arguments are recipes; without any those of
// examples/fits are taken. --seeds N and --evaluations N,N,... take the place of 10 and those below.

#include <fmt/format.h>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "fit/FitErrors.h"
#include "structure/SimulatedMeasurement.h"
#include "structure/StructureFit.h"

using namespace qvre;

namespace {

constexpr double kNoiseErrors = 3.0;

struct Searched {
    bool isFound = false;
    int evaluations = 0;  // with the way down
    double r = 0.0;
    std::size_t rivals = 0;
};

/// Within so many noise errors of the truth in every parameter.
bool IsTruth(const FitPlan& plan, const Trial& best, const FitPoint& truth) {
    StructureObjective objective(plan.space, MakeDataSets(plan, best.point));
    FitProblem problem(plan.space, objective);
    const NoiseErrors noise = NoiseErrorsAt(problem, problem.EvaluateOne(best.point), 1e-2);
    for (std::size_t i = 0; i < truth.size(); ++i)
        if (!(std::abs(best.point[i] - truth[i]) <= kNoiseErrors * noise.sigma[i].value_or(0.0)))
            return false;
    return true;
}

Searched Search(const std::string& recipe, const FitChoices& choices, const std::string& folder) {
    FitPlan plan = PlanFit(recipe, choices);
    plan.fit.findsErrors = false;
    const FitPoint truth = SimulateMeasurements(plan, plan.fit.seed, folder);
    const std::string evaluations = folder + "/evaluations.csv";
    std::filesystem::remove(evaluations);
    EvaluationTable table(evaluations, plan.space, {"data"});
    StructureFit fit(plan, table);
    fit.EvaluateStart();
    const FitReport report = fit.Run();
    return {IsTruth(plan, report.best, truth), report.evaluations, report.best.evaluation.r,
            report.rivals.size()};
}

void Print(const std::string& recipe, FitSearch search, int evaluations, int seeds,
           const std::string& folder) {
    int found = 0;
    double all = 0.0;
    double rivals = 0.0;
    std::string misses;
    for (int seed = 1; seed <= seeds; ++seed) {
        const Searched searched =
            Search(recipe, {search, static_cast<std::uint64_t>(seed), evaluations}, folder);
        found += searched.isFound ? 1 : 0;
        all += searched.evaluations;
        rivals += static_cast<double>(searched.rivals);
        if (!searched.isFound) misses += fmt::format(" {} (R {:.4f})", seed, searched.r);
    }
    fmt::print("  {:7} {:5}  found {:2} of {}  {:4.0f} evaluations with the way down  {:.1f} rivals{}\n",
               WordFor(search), evaluations, found, seeds, all / seeds, rivals / seeds,
               misses.empty() ? "" : "  missed by seeds" + misses);
    std::fflush(stdout);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    CLI::App program("What the searches of a fit are worth");
    std::vector<std::string> recipes;
    int seeds = 10;
    std::vector<int> evaluations = {25, 50, 100, 200};
    program.add_option("RECIPES", recipes);
    program.add_option("--seeds", seeds);
    program.add_option("--evaluations", evaluations)->delimiter(',');
    CLI11_PARSE(program, argumentCount, arguments);
    const std::string folder =
        (std::filesystem::temp_directory_path() / fmt::format("qvre-searches-{}", getpid())).string();
    std::filesystem::create_directories(folder);
    for (const std::string& recipe : recipes) {
        fmt::print("{}\n", recipe);
        for (const int most : evaluations)
            for (const FitSearch search : {FitSearch::kGlobal, FitSearch::kSobol})
                Print(recipe, search, most, seeds, folder);
    }
    std::filesystem::remove_all(folder);
}
