#include "fit/Rivals.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "fit/RLevel.h"

namespace qvre {

namespace {

constexpr double kSamePlace = 0.01;  // of the room of each parameter

double SquaredDistance(const FitPoint& a, const FitPoint& b) {
    double sum = 0.0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += (a[i] - b[i]) * (a[i] - b[i]);
    return sum;
}

bool IsSamePlace(const FitPoint& a, const FitPoint& b) {
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::abs(a[i] - b[i]) > kSamePlace) return false;
    return true;
}

bool IsSameValley(FitProblem& problem, const Trial& a, const Trial& b) {
    const FitPoint from = problem.space.ToUnit(a.point);
    const FitPoint to = problem.space.ToUnit(b.point);
    if (IsSamePlace(from, to)) return true;
    std::vector<FitPoint> between;
    for (const double share : {0.25, 0.5, 0.75}) {
        FitPoint unit = from;
        for (std::size_t i = 0; i < unit.size(); ++i) unit[i] += share * (to[i] - from[i]);
        between.push_back(problem.space.FromUnit(unit));
    }
    const double wall = std::max(a.misfit, b.misfit);
    const std::vector<Trial> trials = problem.Evaluate(between);
    return std::all_of(trials.begin(), trials.end(),
                       [wall](const Trial& trial) { return trial.misfit <= wall; });
}

}  // namespace

std::vector<FitPoint> ValleyPoints(const ParameterSpace& space, const std::vector<EvaluationRecord>& records,
                                   std::size_t most) {
    std::vector<const EvaluationRecord*> ranked;
    for (const EvaluationRecord& record : records)
        if (record.failure.empty()) ranked.push_back(&record);
    std::stable_sort(ranked.begin(), ranked.end(), [](const EvaluationRecord* a, const EvaluationRecord* b) {
        return a->misfit < b->misfit;
    });
    std::vector<FitPoint> units;
    units.reserve(ranked.size());
    for (const EvaluationRecord* record : ranked) units.push_back(space.ToUnit(record->point));

    // Ranked by misfit, a point is the least of its neighbourhood if none of its neighbours stands before it.
    const std::size_t neighbours = 2 * space.parameters.size() + 1;
    std::vector<FitPoint> valleys;
    std::vector<double> distances;
    for (std::size_t i = 0; i < ranked.size() && valleys.size() < most; ++i) {
        double nearestBetter = INFINITY;
        distances.clear();
        for (std::size_t j = 0; j < ranked.size(); ++j) {
            const double distance = SquaredDistance(units[i], units[j]);
            if (j < i) nearestBetter = std::min(nearestBetter, distance);
            if (j > i) distances.push_back(distance);
        }
        const auto closer = std::count_if(distances.begin(), distances.end(),
                                          [&](double distance) { return distance < nearestBetter; });
        if (i == 0 || static_cast<std::size_t>(closer) >= neighbours) valleys.push_back(ranked[i]->point);
    }
    return valleys;
}

std::vector<Trial> DistinctMinima(FitProblem& problem, const std::vector<FitPoint>& starts,
                                  const LocalFitter& goDown) {
    std::vector<Trial> minima;
    for (const FitPoint& start : starts) {
        LocalFit fit = goDown(start);
        if (fit.best.point.empty()) continue;
        const auto same = std::find_if(minima.begin(), minima.end(), [&](const Trial& known) {
            return IsSameValley(problem, known, fit.best);
        });
        if (same == minima.end())
            minima.push_back(std::move(fit.best));
        else if (fit.best.misfit < same->misfit)
            *same = std::move(fit.best);
        if (fit.stop == FitStop::kInterrupted) break;
    }
    std::stable_sort(minima.begin(), minima.end(),
                     [](const Trial& a, const Trial& b) { return a.misfit < b.misfit; });
    return minima;
}

std::vector<Trial> RivalsOf(const std::vector<Trial>& minima, double independentData) {
    std::vector<Trial> rivals;
    if (minima.empty()) return rivals;
    const double level = RLevel(minima.front().evaluation.r, independentData);
    std::copy_if(minima.begin() + 1, minima.end(), std::back_inserter(rivals),
                 [level](const Trial& trial) { return trial.evaluation.r <= level; });
    return rivals;
}

}  // namespace qvre
