#include <nlopt.h>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "fit/LocalFit.h"
#include "foundation/Interruption.h"

namespace qvre {

namespace {

constexpr double kLargestStep = 0.25;  // of the room: the first points stand to both sides of the start

/// What the library calls: the misfit in the unit cube of those parameters that vary.
class Callee {
public:
    Callee(FitProblem& problem, const FitPoint& start, const LocalFitSettings& settings)
        : point_(start), problem_(problem) {
        for (std::size_t i = 0; i < start.size(); ++i)
            if (settings.isHeld.empty() || !settings.isHeld[i]) varied.push_back(i);
    }

    std::vector<double> Start() const {
        const FitPoint unit = problem_.space.ToUnit(point_);
        std::vector<double> start;
        for (const std::size_t parameter : varied) start.push_back(unit[parameter]);
        return start;
    }

    /// No exception may pass through the library, which is C.
    static double Call(unsigned /*count*/, const double* unit, double* /*gradient*/, void* data) noexcept {
        auto& callee = *static_cast<Callee*>(data);
        try {
            return callee.Misfit(unit);
        } catch (...) {
            callee.failure = std::current_exception();
            nlopt_force_stop(callee.search);
            return callee.worst_;
        }
    }

    std::vector<std::size_t> varied;
    nlopt_opt search = nullptr;
    Trial best;
    std::string startFailure;
    std::exception_ptr failure;

private:
    double Misfit(const double* unit) {
        FitPoint all = problem_.space.ToUnit(point_);
        for (std::size_t i = 0; i < varied.size(); ++i) all[varied[i]] = unit[i];
        all = problem_.space.FromUnit(all);
        for (const std::size_t parameter : varied) point_[parameter] = all[parameter];
        Trial trial = problem_.EvaluateOne(point_);
        // A quadratic through an infinite value would be none.
        if (trial.HasFailed()) {
            if (best.point.empty()) {
                startFailure = trial.evaluation.failure;
                nlopt_force_stop(search);
            }
            return worst_;
        }
        const double misfit = trial.misfit;
        worst_ = std::max(worst_, 2.0 * misfit);
        if (misfit < best.misfit) best = std::move(trial);
        return misfit;
    }

    FitPoint point_;
    FitProblem& problem_;
    double worst_ = 0.0;  // twice the largest misfit so far
};

FitStop StopOf(nlopt_result result) {
    switch (result) {
        case NLOPT_XTOL_REACHED:
            return FitStop::kStep;
        case NLOPT_SUCCESS:
        case NLOPT_FTOL_REACHED:
        case NLOPT_STOPVAL_REACHED:
        case NLOPT_ROUNDOFF_LIMITED:
            return FitStop::kDecrease;
        case NLOPT_MAXEVAL_REACHED:
            return FitStop::kLimit;
        default:
            return FitStop::kFailed;
    }
}

}  // namespace

LocalFit FitWithoutDerivatives(FitProblem& problem, const FitPoint& start, const LocalFitSettings& settings) {
    const int before = problem.evaluations;
    LocalFit fit;
    Callee callee(problem, start, settings);
    std::vector<double> unit = callee.Start();
    const std::size_t count = unit.size();
    if (count == 0) return FitByGaussNewton(problem, start, settings);

    const std::unique_ptr<nlopt_opt_s, decltype(&nlopt_destroy)> search(
        nlopt_create(count == 1 ? NLOPT_LN_NELDERMEAD : NLOPT_LN_BOBYQA, static_cast<unsigned>(count)),
        nlopt_destroy);
    callee.search = search.get();
    std::vector<double> tolerances;
    std::vector<double> steps;
    for (const std::size_t parameter : callee.varied) {
        tolerances.push_back(settings.stepTolerance * problem.space.UnitScale(parameter));
        steps.push_back(std::min(problem.space.UnitScale(parameter), kLargestStep));
    }
    nlopt_set_min_objective(search.get(), Callee::Call, &callee);
    nlopt_set_lower_bounds1(search.get(), 0.0);
    nlopt_set_upper_bounds1(search.get(), 1.0);
    nlopt_set_initial_step(search.get(), steps.data());
    nlopt_set_xtol_abs(search.get(), tolerances.data());
    nlopt_set_ftol_rel(search.get(), settings.decreaseTolerance);
    nlopt_set_maxeval(search.get(), settings.mostEvaluations);
    double least = 0.0;
    fit.stop = StopOf(nlopt_optimize(search.get(), unit.data(), &least));

    if (callee.failure) {
        try {
            std::rethrow_exception(callee.failure);
        } catch (const Interruption&) {
            fit.stop = FitStop::kInterrupted;
        }
    }
    if (callee.best.point.empty() && fit.stop != FitStop::kInterrupted) {
        fit.stop = FitStop::kFailed;
        fit.detail = callee.startFailure;
    } else if (fit.stop == FitStop::kFailed) {
        const char* message = nlopt_get_errmsg(search.get());
        fit.detail = message != nullptr ? message : "the method gave up";
    }
    fit.best = std::move(callee.best);
    fit.evaluations = problem.evaluations - before;
    return fit;
}

}  // namespace qvre
