// What the searches of a fit are worth: recipes are simulated and fitted with several seeds, by both global
// searches and with different numbers of evaluations. The arguments are recipes, such as those of
// examples/fits; --seeds N and --evaluations N,N,... take the place of what stands below.

#include <fmt/format.h>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "fit/RLevel.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "structure/SimulatedMeasurement.h"
#include "structure/StructureFit.h"

using namespace qvre;

namespace {

constexpr double kSameValley = 0.05;  // of the room of a parameter

struct Searched {
    bool isFound = false;
    int evaluations = 0;  // with the way down
    double r = 0.0;
    std::size_t rivals = 0;
};

/// In the valley of the truth, whose R lies within the level of the best.
bool IsTruth(const FitPlan& plan, const FitReport& report, const FitPoint& truth) {
    const FitPoint unit = plan.space.ToUnit(truth);
    const FitPoint found = plan.space.ToUnit(report.best.point);
    for (std::size_t i = 0; i < unit.size(); ++i)
        if (std::abs(found[i] - unit[i]) > kSameValley) return false;
    StructureObjective objective(plan.space, MakeDataSets(plan, report.best.point));
    return objective.Evaluate({truth}).front().r <= RLevel(report.best.evaluation.r, report.independentData);
}

Searched Search(const std::string& recipe, const FitChoices& choices, const std::string& folder) {
    FitPlan plan = PlanFit(recipe, choices);
    plan.fit.findsErrors = false;
    const Simulation made = SimulateMeasurements(plan, plan.fit.seed, folder);
    for (const auto& [path, table] : made.files) WriteWholeFile(path, table);
    const std::string evaluations = folder + "/evaluations.csv";
    std::filesystem::remove(evaluations);
    EvaluationTable table(evaluations, plan.space, {"data"});
    StructureFit fit(plan, table);
    fit.EvaluateStart();
    const FitReport report = fit.Run();
    return {IsTruth(plan, report, made.truth), report.evaluations, report.best.evaluation.r,
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
    program.add_option("RECIPES", recipes)->required();
    program.add_option("--seeds", seeds);
    program.add_option("--evaluations", evaluations)->delimiter(',');
    CLI11_PARSE(program, argumentCount, arguments);
    const std::string folder =
        (std::filesystem::temp_directory_path() / fmt::format("qvre-searches-{}", getpid())).string();
    std::filesystem::create_directories(folder);
    int status = 0;
    try {
        for (const std::string& recipe : recipes) {
            fmt::print("{}\n", recipe);
            for (const int most : evaluations)
                for (const FitSearch search : {FitSearch::kGlobal, FitSearch::kSobol})
                    Print(recipe, search, most, seeds, folder);
        }
    } catch (const ZfError& error) {
        fmt::print(stderr, "{}\n", error.message);
        status = 1;
    }
    std::filesystem::remove_all(folder);
    return status;
}
