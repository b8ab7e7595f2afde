#include "structure/CarryOutFit.h"

#include <fmt/format.h>
#include <omp.h>

#include <filesystem>

#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "run/ResultFolder.h"
#include "run/RunLog.h"
#include "run/RunProgress.h"
#include "structure/BestStructure.h"
#include "structure/FitFiles.h"
#include "structure/FitOutput.h"
#include "structure/FitReportText.h"
#include "structure/SimulatedMeasurement.h"
#include "structure/StructureFit.h"

namespace qvre {

namespace {

constexpr const char* kProblem = ".fit";  // what the evaluations of the folder belong to

/// Refuses to mix the evaluations of different problems; a new one is remembered.
void TakeProblem(const FitPlan& plan, const ResultFolder& folder, const FitOptions& options) {
    std::vector<std::string> now = ProblemText(plan);
    now.emplace_back(options.simulates ? "simulated" : "measured");
    const std::string path = folder.Path(kProblem);
    if (!options.repeatsAll && std::filesystem::exists(path)) {
        const std::vector<std::string> before = LineSplit(ReadTextFile(path));
        const auto [a, b] = std::mismatch(before.begin(), before.end(), now.begin(), now.end());
        if (a == before.end() && b == now.end()) return;
        throw ZfError(
            fmt::format("{} has the evaluations of another problem: \"{}\" became \"{}\"; name another "
                        "folder with -o, or give "
                        "--repeat to begin anew",
                        std::filesystem::path(path).parent_path().string(), a == before.end() ? "" : *a,
                        b == now.end() ? "" : *b));
    }
    std::filesystem::remove(folder.Path(fit_files::kEvaluations));
    WriteWholeFile(path, fmt::format("{}\n", fmt::join(now, "\n")));
}

std::vector<std::string> NamesOf(const FitPlan& plan) {
    std::vector<std::string> names;
    for (const RecipeSource& source : plan.sources) names.push_back(NameOfData(source));
    return names;
}

std::string ValuesText(const FitReport& report) {
    std::string text;
    for (std::size_t i = 0; i < report.best.point.size(); ++i)
        text += fmt::format("  {} = {:.5g}", report.space.parameters[i].name, report.best.point[i]);
    return text;
}

/// Tells of the course of a fit: a line now and then on the console, and the report in the folder.
class Follower {
public:
    Follower(RunLog& log, std::string folder) : log_(log), folder_(std::move(folder)) {}

    void operator()(const FitReport& report) {
        const bool isBetter = report.best.misfit < (1.0 - kBetter) * told_;
        if (isBetter || report.evaluations >= 2 * evaluations_) {
            log_.Line(fmt::format("{:>6} evaluations  R {:.4f}{}", report.evaluations,
                                  report.best.evaluation.r, ValuesText(report)));
            told_ = report.best.misfit;
            evaluations_ = report.evaluations;
        }
        const auto now = std::chrono::steady_clock::now();
        if (now - written_ < std::chrono::seconds(10)) return;
        WriteFitReport(report, folder_);
        written_ = now;
    }

private:
    static constexpr double kBetter = 1e-3;

    RunLog& log_;
    std::string folder_;
    double told_ = std::numeric_limits<double>::infinity();
    int evaluations_ = 1;
    std::chrono::steady_clock::time_point written_ = std::chrono::steady_clock::now();
};

std::string ExpectedText(const FitPlan& plan, double seconds) {
    const int expected = StructureFit::Expected(plan);
    const int threads = omp_get_max_threads();
    return fmt::format("an evaluation takes {:.2g} s; about {} of them by {} thread{}: {}", seconds, expected,
                       threads, threads == 1 ? "" : "s", DurationText(seconds * expected / threads));
}

}  // namespace

FitStop CarryOutFit(const FitOptions& options) {
    const InterruptRequest interrupts;
    FitPlan plan = PlanFit(options.recipe, options.choices);
    if (!options.simulates)
        MakeDataSets(plan, plan.space.Start());  // what fails, fails before there is a folder
    ResultFolder folder(options.folder);
    TakeProblem(plan, folder, options);
    FitPoint truth;
    if (options.simulates) truth = SimulateMeasurements(plan, plan.fit.seed, options.folder);
    RunLog log(folder.Path("fit.log"));
    log.Line(fmt::format("qvre {}: {}", QVRE_VERSION, plan.title));
    log.Note("recipe " + options.recipe + "\n" + plan.text);
    EvaluationTable table(folder.Path(fit_files::kEvaluations), plan.space, NamesOf(plan));
    StructureFit fit(plan, table, Follower(log, options.folder));
    const Trial& start = fit.EvaluateStart();
    log.Line(fmt::format("start: R {:.4f} with {} data, {:.0f} of them independent", start.evaluation.r,
                         start.evaluation.residuals.size(), fit.Objective().IndependentData()));
    log.Line(ExpectedText(plan, start.evaluation.seconds));
    FitReport report = fit.Run();
    if (report.stop != FitStop::kInterrupted) DescribeBest(plan, fit.Objective(), report);
    WriteFitReport(report, options.folder);
    log.Line(FitLastLines(report, options.folder));
    if (options.simulates) log.Line(RecoveryText(plan, truth, report));
    InterruptRequest::ThrowIfPending();
    return report.stop;
}

}  // namespace qvre
