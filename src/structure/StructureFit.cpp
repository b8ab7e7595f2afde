#include "structure/StructureFit.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <numeric>
#include <utility>

#include "fit/EvolutionSearch.h"
#include "fit/Rivals.h"
#include "fit/SobolPoints.h"
#include "foundation/Interruption.h"
#include "foundation/ZfError.h"
#include "run/RunProgress.h"

namespace qvre {

namespace {

/// Of the scale of a parameter, so 0.001 angstrom: what the solution of the scattering and the turn of the
/// sample leave open is small against the change over it.
constexpr double kDifferenceStep = 1e-2;
constexpr double kStepTolerance = 1e-3;

/// Of the room of each parameter. Where the strategy ends, a valley is known, and is gone down otherwise.
constexpr double kEvolutionStep = 0.2;
constexpr double kEvolutionTolerance = 1e-2;

constexpr int kMostLocal = 200;
constexpr int kSearchByParameter = 60;
constexpr int kMostRounds = 3;  // of errors that find a better structure

int MostEvaluations(const RecipeFit& fit, std::size_t parameters) {
    if (fit.evaluations > 0) return fit.evaluations;
    return fit.search == FitSearch::kLocal ? kMostLocal : kSearchByParameter * static_cast<int>(parameters);
}

std::string SearchText(const FitPlan& plan) {
    const RecipeFit& fit = plan.fit;
    const std::string descent =
        fit.descent == FitDescent::kGaussNewton ? "Gauss-Newton" : "BOBYQA, without derivatives";
    if (fit.search == FitSearch::kLocal) return descent + " from the start";
    const std::string search =
        fit.search == FitSearch::kGlobal ? "Sobol points and evolution strategy" : "Sobol points";
    return fmt::format("{}, seed {}; then {} down the best valleys, {} at the most", search, fit.seed,
                       descent, fit.minima);
}

std::string CalculationText(const FitPlan& plan, const StructureObjective& objective) {
    std::string text = objective.DataSets().front()->MethodText();
    text += plan.fit.phases == FitPhases::kKept ? ", phase shifts kept" : ", phase shifts of each structure";
    text += plan.fit.amplitude == FitAmplitude::kFree ? ", amplitude of the modulation free"
                                                      : ", amplitude of the modulation as calculated";
    return text;
}

FitReport EmptyReport(const FitPlan& plan, const StructureObjective& objective) {
    FitReport report{.space = plan.space};
    report.title = plan.title;
    report.recipe = plan.recipePath;
    report.calculation = CalculationText(plan, objective);
    report.search = SearchText(plan);
    report.isRunning = true;
    report.independentData = plan.fit.independentData.value_or(objective.IndependentData());
    report.hasSigmas = objective.HasSigmas();
    report.isSmooth = std::all_of(objective.DataSets().begin(), objective.DataSets().end(),
                                  [](const auto& set) { return set->IsSmooth(); });
    return report;
}

}  // namespace

StructureFit::StructureFit(const FitPlan& plan, EvaluationTable& table, Follow follow)
    : plan_(plan),
      objective_(std::make_shared<StructureObjective>(plan.space, MakeDataSets(plan, plan.space.Start()))),
      table_(table),
      follow_(std::move(follow)),
      problem_(plan.space, *this, &table),
      report_(EmptyReport(plan, *objective_)) {
    settings_.mostEvaluations = plan.fit.search == FitSearch::kLocal
                                    ? MostEvaluations(plan.fit, plan.space.parameters.size())
                                    : kMostLocal;
    settings_.differenceStep = kDifferenceStep;
    settings_.stepTolerance = kStepTolerance;
}

std::vector<Evaluation> StructureFit::Evaluate(const std::vector<FitPoint>& points) {
    constexpr auto kEvery = std::chrono::seconds(1);
    if (std::chrono::steady_clock::now() - told_ >= kEvery) Tell();
    return objective_->Evaluate(points);
}

/// The best evaluation so far; those before the phase shifts were renewed do not count.
Trial StructureFit::BestRecord() const {
    Trial best = report_.start;
    for (std::size_t i = renewed_; i < table_.records.size(); ++i) {
        const EvaluationRecord& record = table_.records[i];
        if (!record.failure.empty() || (i > renewed_ && !(record.misfit < best.misfit))) continue;
        best.point = record.point;
        best.misfit = record.misfit;
        best.evaluation = {{}, record.r, record.dataSetR, record.seconds, {}};
    }
    return best;
}

void StructureFit::Count(FitReport& report) const {
    report.records = table_.records;
    report.evaluations = static_cast<int>(table_.records.size());
    for (const EvaluationRecord& record : table_.records) report.seconds += record.seconds;
}

void StructureFit::Tell() {
    if (!follow_ || table_.records.size() <= renewed_) return;
    FitReport now = report_;
    Count(now);
    now.best = BestRecord();
    follow_(now);
    told_ = std::chrono::steady_clock::now();
}

const Trial& StructureFit::EvaluateStart() {
    ++problem_.generation;
    report_.start = problem_.EvaluateOne(plan_.space.Start());
    if (report_.start.HasFailed())
        throw ZfError("the start cannot be calculated: " + report_.start.evaluation.failure);
    return report_.start;
}

LocalFit StructureFit::Descend(const FitPoint& start) {
    ++problem_.generation;
    try {
        objective_->KeepSettingsOf(start);
    } catch (const Interruption&) {
        throw;
    } catch (const ZfError& error) {
        return {.best = {}, .stop = FitStop::kFailed, .detail = error.message};
    }
    return plan_.fit.descent == FitDescent::kGaussNewton ? FitByGaussNewton(problem_, start, settings_)
                                                         : FitWithoutDerivatives(problem_, start, settings_);
}

/// Points that fill the room evenly, so that no wide valley stays unseen.
void StructureFit::FillRoom(int count) {
    constexpr std::size_t kBatch = 16;  // is lost when it is stopped
    const ParameterSpace& space = plan_.space;
    problem_.keepsResiduals = false;
    ++problem_.generation;
    std::vector<FitPoint> points =
        SobolPoints(space.parameters.size(), static_cast<std::size_t>(count), plan_.fit.seed);
    for (FitPoint& point : points) point = space.FromUnit(point);
    for (std::size_t first = 0; first < points.size(); first += kBatch) {
        const auto begin = points.begin() + static_cast<std::ptrdiff_t>(first);
        const auto end =
            points.begin() + static_cast<std::ptrdiff_t>(std::min(points.size(), first + kBatch));
        problem_.Evaluate(std::vector<FitPoint>(begin, end));
    }
    problem_.keepsResiduals = true;
}

/// From the best point known; false after an interrupt.
bool StructureFit::Evolve(int count) {
    const auto best =
        std::min_element(table_.records.begin(), table_.records.end(),
                         [](const EvaluationRecord& a, const EvaluationRecord& b) {
                             return a.failure.empty() && (!b.failure.empty() || a.misfit < b.misfit);
                         });
    EvolutionSearch search(plan_.space.ToUnit(best->point), {.seed = plan_.fit.seed,
                                                             .population = plan_.fit.population,
                                                             .firstStep = kEvolutionStep,
                                                             .mostEvaluations = count,
                                                             .restarts = count,
                                                             .stepTolerance = kEvolutionTolerance});
    return SearchGlobally(problem_, search).stop != FitStop::kInterrupted;
}

/// From where valleys are gone down; none after an interrupt.
std::vector<FitPoint> StructureFit::Starts() {
    if (plan_.fit.search == FitSearch::kLocal) return {plan_.space.Start()};
    const int most = MostEvaluations(plan_.fit, plan_.space.parameters.size());
    const int evolved = plan_.fit.search == FitSearch::kGlobal ? most / 2 : 0;
    FillRoom(most - evolved);
    if (evolved > 0 && !Evolve(evolved)) return {};
    return ValleyPoints(plan_.space, table_.records, static_cast<std::size_t>(plan_.fit.minima));
}

/// Finds the minima below some points; false after an interrupt.
bool StructureFit::GoDown(const std::vector<FitPoint>& starts) {
    if (starts.size() > 1)
        minima_ = DistinctMinima(problem_, starts, [this](const FitPoint& start) { return Descend(start); });
    const LocalFit last =
        Descend(starts.size() > 1 && !minima_.empty() ? minima_.front().point : starts.front());
    report_.stop = last.stop;
    report_.detail = last.detail;
    if (last.best.point.empty()) return false;
    report_.best = last.best;
    if (minima_.empty())
        minima_ = {last.best};
    else
        minima_.front() = last.best;
    return last.stop != FitStop::kInterrupted && last.stop != FitStop::kFailed;
}

/// Goes on from each minimum with its own phase shifts; the former ones may be those of a start that is far
/// from it, and make a wrong one the best. The best one keeps those with which it became the best, so that
/// the others compare with it. False when that is the end.
bool StructureFit::Renew() {
    if (plan_.fit.phases != FitPhases::kKept) return true;
    renewed_ = table_.records.size();
    std::map<FitPoint, std::shared_ptr<StructureObjective>> objectives;  // by the minima that they led to
    std::vector<FitPoint> starts;
    for (const Trial& minimum : minima_) starts.push_back(minimum.point);
    minima_ = DistinctMinima(problem_, starts, [&](const FitPoint& start) {
        objective_ = std::make_shared<StructureObjective>(plan_.space, MakeDataSets(plan_, start));
        LocalFit fit = Descend(start);
        objectives[fit.best.point] = objective_;
        return fit;
    });
    if (minima_.empty()) return GoDown({report_.best.point});
    objective_ = objectives.at(minima_.front().point);
    return GoDown({minima_.front().point});
}

/// Both errors of all parameters. When a profile comes upon a better structure and `mayMove`, the search for
/// it begins again there, the former minimum being one of several, and this returns false.
bool StructureFit::FindErrors(bool mayMove) {
    report_.levels.clear();
    ++problem_.generation;
    report_.noise = NoiseErrorsAt(problem_, report_.best, kDifferenceStep);
    const double factor = RLevelInNoiseErrors(report_.independentData, report_.noise->degreesOfFreedom);
    for (std::size_t i = 0; i < plan_.space.parameters.size(); ++i) {
        ++problem_.generation;
        const double firstStep = report_.noise->sigma[i].value_or(0.0) * factor;
        report_.levels.push_back(
            RLevelErrorAt(problem_, report_.best, i, report_.independentData, firstStep, settings_));
        if (!mayMove || !report_.levels.back().better) continue;
        std::vector<FitPoint> starts = {report_.levels.back().better->point};
        for (const Trial& minimum : minima_) starts.push_back(minimum.point);
        const double former = report_.best.misfit;
        if (!GoDown(starts) || report_.best.misfit < former) return false;
    }
    return true;
}

FitReport StructureFit::Run() {
    try {
        const std::vector<FitPoint> starts = Starts();
        report_.stop = starts.empty() ? FitStop::kInterrupted : FitStop::kFailed;
        if (!starts.empty() && GoDown(starts) && Renew() && plan_.fit.findsErrors)
            for (int round = 1; IsConverged(report_.stop) && !FindErrors(round < kMostRounds); ++round)
                continue;
    } catch (const Interruption&) {
        problem_.keepsResiduals = true;
        report_.stop = FitStop::kInterrupted;
    }
    if (InterruptRequest::IsPending())
        report_.stop = FitStop::kInterrupted;  // the errors end with what they have
    if (report_.stop != FitStop::kInterrupted) table_.End();
    if (report_.best.point.empty() || report_.stop == FitStop::kInterrupted) report_.best = BestRecord();
    report_.rivals = RivalsOf(minima_, report_.independentData);
    report_.isRunning = false;
    Count(report_);
    return report_;
}

int StructureFit::Expected(const FitPlan& plan) {
    const int n = static_cast<int>(plan.space.parameters.size());
    constexpr int kSteps = 6;
    constexpr int kPointsOfSide = 4;
    const int local = 1 + kSteps * (n + 1);
    const int profile = 2 * kPointsOfSide * (n == 1 ? 1 : 2 * n + 1);
    int count = local;
    if (plan.fit.search != FitSearch::kLocal)
        count += MostEvaluations(plan.fit, plan.space.parameters.size()) + (plan.fit.minima - 1) * local;
    return plan.fit.findsErrors ? count + 2 * n + n * profile : count;
}

}  // namespace qvre
