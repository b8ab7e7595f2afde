#include "run/CarryOut.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstddef>

#include "foundation/ZfError.h"
#include "run/EnergyResults.h"
#include "run/ResultComparison.h"
#include "run/ResultFolder.h"
#include "run/RunLog.h"
#include "run/RunProgress.h"

namespace qvre {

namespace {

void TellStep(const RunStep& step, const std::string& result, const std::string& remarks, RunLog& log) {
    const std::string line = fmt::format("{:<11} {}  {}", step.name, fmt::join(step.outputs, ", "), result);
    if (step.isOneOfMany) {
        log.Note(line);
        log.IndentedNote(remarks);
    } else {
        log.Line(line);
        log.Indented(remarks);
    }
}

std::size_t WarningsIn(const std::string& remarks) {
    std::size_t count = 0;
    for (std::size_t at = remarks.find("warning:"); at != std::string::npos;
         at = remarks.find("warning:", at + 1))
        ++count;
    return count;
}

/// Returns the number of warnings that only the log file tells.
std::size_t CarryOutStep(const RunStep& step, ResultFolder& folder, RunLog& log) {
    if (folder.IsDone(step)) {
        TellStep(step, "unchanged", {}, log);
        return 0;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::string remarks = step.make();
    folder.Remember(step);
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    TellStep(step, DurationText(seconds), remarks, log);
    return step.isOneOfMany ? WarningsIn(remarks) : 0;
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
        std::size_t warnings = 0;
        for (const RunStep& step : plan.steps) {
            InterruptRequest::ThrowIfPending();
            warnings += CarryOutStep(step, folder, log);
        }
        if (warnings > 0) log.Line(fmt::format("{} warnings at the other energies: see run.log", warnings));
        CompareResults(plan, folder, log);
        CompareEnergyResults(plan, folder, log);
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
