#include "recipe/RecipeRun.h"

#include <chrono>
#include <fstream>
#include <sstream>

#include "recipe/RecipeComparison.h"
#include "recipe/RecipePlan.h"
#include "run/RunLog.h"
#include "run/RunProgress.h"

namespace {

std::string Outputs(const RunStep& step) {
    std::string names;
    for (const std::string& name : step.outputs) names += (names.empty() ? "" : ", ") + name;
    return names;
}

std::string StepLine(const RunStep& step, const std::string& result) {
    std::string line = step.name;
    line.resize(std::max<std::size_t>(line.size() + 1, 12), ' ');
    return line + Outputs(step) + "  " + result;
}

void CarryOut(const RunStep& step, ResultFolder& folder, RunLog& log) {
    if (folder.IsDone(step)) {
        log.Line(StepLine(step, "unchanged"));
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::string remarks = step.make();
    folder.Remember(step);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    log.Line(StepLine(step, DurationText(seconds)));
    log.Indented(remarks);
}

std::string ContentOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

}  // namespace

void RunRecipe(const std::string& recipePath, const RecipeRunOptions& options) {
    const InterruptRequest interrupt;
    const RecipePlan plan = PlanRecipe(recipePath, options);
    ResultFolder folder(options.folder);
    if (options.repeatsAll) folder.ForgetAll();

    RunLog log(folder.Path("run.log"));
    log.Line("qvre " QVRE_VERSION ": " + plan.title);
    log.Note("recipe " + recipePath + "\n" + ContentOf(recipePath));
    try {
        for (const RunStep& step : plan.steps) {
            InterruptRequest::ThrowIfPending();
            CarryOut(step, folder, log);
        }
        CompareResults(plan, folder, log);
    } catch (const ZfError& error) {
        log.Note("stopped: " + error.message);
        throw;
    }
    log.Line("results in " + options.folder);
}
