#include "structure/CarryOutFit.h"

#include <fmt/format.h>
#include <omp.h>

#include <algorithm>
#include <filesystem>

#include "foundation/FileReading.h"
#include "foundation/Interruption.h"
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

using Lines = std::vector<std::string>;

/// The first line that only one of two texts has.
std::string OwnLine(const Lines& of, const Lines& other) {
    const auto own = std::find_if(of.begin(), of.end(), [&](const std::string& line) {
        return std::find(other.begin(), other.end(), line) == other.end();
    });
    return own == of.end() ? "" : *own;
}

/// "file measured.csv" of a line that has its fingerprint, too.
std::string FileOf(const std::string& line) {
    return line.starts_with("file ") ? line.substr(0, line.find_last_of(' ')) : "";
}

std::string ChangeText(const Lines& before, const Lines& now) {
    const std::string gone = OwnLine(before, now);
    const std::string added = OwnLine(now, before);
    if (!FileOf(gone).empty() && FileOf(gone) == FileOf(added)) return "the " + FileOf(gone) + " has changed";
    if (gone.empty()) return fmt::format("\"{}\" is new", added);
    if (added.empty()) return fmt::format("\"{}\" is gone", gone);
    return fmt::format(R"("{}" became "{}")", gone, added);
}

/// Refuses to mix the evaluations of different problems; a new one is remembered.
void TakeProblem(const FitPlan& plan, const ResultFolder& folder, bool forgets) {
    const Lines now = ProblemText(plan);
    const std::string path = folder.Path(kProblem);
    if (!forgets && std::filesystem::exists(path)) {
        const Lines before = LineSplit(ReadTextFile(path));
        if (before == now) return;
        throw ZfError(
            fmt::format("{} has the evaluations of another problem: {}; name another folder with -o, or give "
                        "--repeat to begin anew",
                        std::filesystem::path(path).parent_path().string(), ChangeText(before, now)));
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
    Simulation simulation;  // what fails, fails before there is a folder
    if (options.simulates)
        simulation = SimulateMeasurements(plan, plan.fit.seed, options.folder);
    else
        MakeDataSets(plan, plan.space.Start());
    ResultFolder folder(options.folder);
    TakeProblem(plan, folder, options.repeatsAll);
    for (const auto& [path, text] : simulation.files) WriteWholeFile(path, text);
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
    try {
        if (report.stop != FitStop::kInterrupted) DescribeBest(plan, fit.Objective(), report);
    } catch (const Interruption&) {
        report.stop = FitStop::kInterrupted;
    }
    WriteFitReport(report, options.folder);
    log.Line(FitLastLines(report, options.folder));
    if (options.simulates && report.stop != FitStop::kInterrupted)
        log.Line(RecoveryText(plan, simulation.truth, report));
    InterruptRequest::ThrowIfPending();
    return report.stop;
}

}  // namespace qvre
