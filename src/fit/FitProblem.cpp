#include "fit/FitProblem.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "fit/EvaluationTable.h"
#include "foundation/ZfError.h"

namespace qvre {

std::vector<Trial> FitProblem::Evaluate(const std::vector<FitPoint>& points) {
    if (table_ != nullptr) {
        if (auto repeated = table_->Repeat(points, keepsResiduals)) {
            for (const Trial& trial : *repeated)
                if (residuals_ == 0 && !trial.evaluation.residuals.empty())
                    residuals_ =
                        trial.evaluation.residuals.size() - space.RestraintResiduals(trial.point).size();
            evaluations += static_cast<int>(points.size());
            return *std::move(repeated);
        }
    }
    std::vector<Evaluation> evaluated = objective_.Evaluate(points);
    if (evaluated.size() != points.size())
        throw ZfError(fmt::format("{} points came back as {} evaluations", points.size(), evaluated.size()));
    std::vector<Trial> trials;
    trials.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
        trials.push_back(Judged(points[i], std::move(evaluated[i])));
    evaluations += static_cast<int>(points.size());
    if (table_ != nullptr) table_->Append(generation, trials, keepsResiduals);
    return trials;
}

Trial FitProblem::Judged(const FitPoint& point, Evaluation evaluation) {
    Trial trial{.point = point, .evaluation = std::move(evaluation)};
    Evaluation& of = trial.evaluation;
    if (trial.HasFailed()) return trial;
    if (residuals_ == 0) residuals_ = of.residuals.size();
    if (of.residuals.empty() || of.residuals.size() != residuals_) {
        of.failure = fmt::format("it has {} data instead of {}", of.residuals.size(), residuals_);
        return trial;
    }
    for (const double restraint : space.RestraintResiduals(point)) of.residuals.push_back(restraint);
    double sum = 0.0;
    for (const double residual : of.residuals) sum += residual * residual;
    if (!std::isfinite(sum) || !std::isfinite(of.r)) {
        of.failure = "its result is not finite";
        return trial;
    }
    trial.misfit = sum;
    return trial;
}

}  // namespace qvre
