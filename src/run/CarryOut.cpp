#include "run/CarryOut.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>

#include "foundation/ZfError.h"
#include "run/ResultComparison.h"
#include "run/ResultFolder.h"
#include "run/RunLog.h"
#include "run/RunProgress.h"

namespace qvre {

namespace {

void TellStep(const RunStep& step, const std::string& result, RunLog& log) {
    log.Line(fmt::format("{:<11} {}  {}", step.name, fmt::join(step.outputs, ", "), result));
}

void CarryOutStep(const RunStep& step, ResultFolder& folder, RunLog& log) {
    if (folder.IsDone(step)) {
        TellStep(step, "unchanged", log);
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::string remarks = step.make();
    folder.Remember(step);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    TellStep(step, DurationText(seconds), log);
    log.Indented(remarks);
}

/// Results of other settings stay, for the run that takes them up again, but must not pass for new ones.
void TellStale(std::vector<std::string> names, RunLog& log) {
    if (names.empty()) return;
    constexpr std::size_t kMostNames = 10;
    const std::size_t more = names.size() - std::min(names.size(), kMostNames);
    names.resize(names.size() - more);
    log.Line(fmt::format("left from earlier settings, not made by this run: {}{}", fmt::join(names, ", "),
                         more > 0 ? fmt::format(" and {} more", more) : ""));
}

}  // namespace

void CarryOut(const RunPlan& plan, bool repeatsAll) {
    const InterruptRequest interrupt;
    const std::vector<std::string> outputs = OutputsOf(plan);
    ResultFolder folder(plan.folder);
    folder.RemoveTemporaries(outputs);
    if (repeatsAll) folder.ForgetAll();

    RunLog log(folder.Path("run.log"));
    log.Line("qvre " QVRE_VERSION ": " + plan.title);
    log.Note(plan.origin);
    log.Indented(plan.remarks);
    try {
        for (const RunStep& step : plan.steps) {
            InterruptRequest::ThrowIfPending();
            CarryOutStep(step, folder, log);
        }
        CompareResults(plan, folder, log);
    } catch (const ZfError& error) {
        try {
            log.Note("stopped: " + error.message);
        } catch (const ZfError&) {  // NOLINT(bugprone-empty-catch): the log of a full disk hides no reason
        }
        throw;
    }
    TellStale(folder.NewlyStale(outputs), log);
    log.Line("results in " + plan.folder);
}

}  // namespace qvre
