#include <Eigen/QR>
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "fit/Jacobian.h"
#include "fit/LocalFit.h"
#include "foundation/Interruption.h"

namespace qvre {

namespace {

constexpr double kFirstDamping = 1e-3;
/// Of the longest column: below it is the rounding of differences, and nothing depends on the parameter.
constexpr double kLeastColumn = 1e-9;

class GaussNewton {
public:
    GaussNewton(FitProblem& problem, const LocalFitSettings& settings)
        : problem_(problem), settings_(settings), evaluationsBefore_(problem.evaluations) {
        for (std::size_t i = 0; i < problem.space.parameters.size(); ++i)
            if (settings.isHeld.empty() || !settings.isHeld[i]) varied_.push_back(i);
        longest_ = Eigen::VectorXd::Zero(std::ssize(varied_));
    }

    LocalFit Fit(const FitPoint& start) {
        LocalFit fit;
        try {
            fit.stop = Run(start, fit.detail);
        } catch (const Interruption&) {
            fit.stop = FitStop::kInterrupted;
        }
        fit.best = std::move(best_);
        fit.evaluations = Evaluations();
        return fit;
    }

private:
    int Evaluations() const { return problem_.evaluations - evaluationsBefore_; }

    FitStop Run(const FitPoint& start, std::string& detail) {
        Trial first = problem_.EvaluateOne(start);
        if (first.HasFailed()) {
            detail = first.evaluation.failure;
            return FitStop::kFailed;
        }
        best_ = std::move(first);
        for (;;) {
            if (best_.misfit == 0.0 || varied_.empty()) return FitStop::kGradient;
            if (Evaluations() + std::ssize(varied_) >= settings_.mostEvaluations) return FitStop::kLimit;
            Jacobian jacobian =
                DifferenceJacobian(problem_, best_, varied_, settings_.differenceStep, Differences::kForward);
            if (!jacobian.failure.empty()) {
                detail = jacobian.failure;
                return FitStop::kFailed;
            }
            jacobian_ = std::move(jacobian.columns);
            if (!HasSlope()) return FitStop::kGradient;
            if (const auto stop = Descend()) return *stop;
        }
    }

    double Unit(std::size_t column) const { return problem_.space.ToUnit(best_.point)[varied_[column]]; }

    /// Finds who is free to move, and whether the misfit falls for any of them.
    bool HasSlope() {
        const Eigen::VectorXd slope = jacobian_.transpose() * ResidualsOf(best_);
        const Eigen::VectorXd lengths = jacobian_.colwise().norm();
        longest_ = longest_.cwiseMax(lengths);
        isFree_.assign(varied_.size(), false);
        bool hasSlope = false;
        for (std::size_t i = 0; i < varied_.size(); ++i) {
            const auto at = static_cast<Eigen::Index>(i);
            const double unit = Unit(i);
            isFree_[i] = lengths[at] > kLeastColumn * longest_.maxCoeff() &&
                         !(unit <= 0.0 && slope[at] > 0.0) && !(unit >= 1.0 && slope[at] < 0.0);
            const double limit = settings_.gradientTolerance * lengths[at] * std::sqrt(best_.misfit);
            hasSlope = hasSlope || (isFree_[i] && std::abs(slope[at]) > limit);
        }
        return hasSlope;
    }

    /// One step that lowers the misfit, with more and more damping until it does.
    std::optional<FitStop> Descend() {
        for (;;) {
            const Eigen::VectorXd step = BoundedStep();
            if (IsSmall(step)) return FitStop::kStep;
            if (Evaluations() >= settings_.mostEvaluations) return FitStop::kLimit;
            FitPoint unit = problem_.space.ToUnit(best_.point);
            for (std::size_t i = 0; i < varied_.size(); ++i)
                unit[varied_[i]] += step[static_cast<Eigen::Index>(i)];
            FitPoint point = problem_.space.FromUnit(unit);
            for (std::size_t i = 0; i < settings_.isHeld.size(); ++i)
                if (settings_.isHeld[i]) point[i] = best_.point[i];
            Trial trial = problem_.EvaluateOne(point);
            const double predicted = best_.misfit - (ResidualsOf(best_) + jacobian_ * step).squaredNorm();
            const double actual = best_.misfit - trial.misfit;
            const double little = settings_.decreaseTolerance * best_.misfit;
            const bool isLevel = std::abs(actual) <= little && predicted <= little;
            if (actual > 0.0) {
                best_ = std::move(trial);
                const double gain = predicted > 0.0 ? actual / predicted : 0.0;
                damping_ *= std::max(1.0 / 3.0, 1.0 - std::pow(2.0 * gain - 1.0, 3.0));
                growth_ = 2.0;
            } else {
                damping_ *= growth_;
                growth_ *= 2.0;
            }
            if (isLevel) return FitStop::kDecrease;
            if (actual > 0.0) return std::nullopt;
        }
    }

    bool IsSmall(const Eigen::VectorXd& step) const {
        for (std::size_t i = 0; i < varied_.size(); ++i) {
            const double limit = settings_.stepTolerance * problem_.space.UnitScale(varied_[i]);
            if (std::abs(step[static_cast<Eigen::Index>(i)]) > limit) return false;
        }
        return true;
    }

    /// The damped step. Parameters that it would take out of their bounds go to the bound, and the others are
    /// solved for again with them there.
    Eigen::VectorXd BoundedStep() const {
        std::vector<bool> isFree = isFree_;
        Eigen::VectorXd step = Eigen::VectorXd::Zero(std::ssize(varied_));
        for (bool isOut = true; isOut;) {
            SolveFor(isFree, step);
            isOut = false;
            for (std::size_t i = 0; i < varied_.size(); ++i) {
                double& along = step[static_cast<Eigen::Index>(i)];
                const double bounded = std::clamp(Unit(i) + along, 0.0, 1.0) - Unit(i);
                if (!isFree[i] || bounded == along) continue;
                if (std::abs(bounded - along) > 1e-14) isOut = true;
                along = bounded;
                isFree[i] = false;
            }
        }
        return step;
    }

    /// Least squares of |residuals + J step|^2 + damping |D step|^2 over the free ones, the others given.
    void SolveFor(const std::vector<bool>& isFree, Eigen::VectorXd& step) const {
        std::vector<Eigen::Index> columns;
        for (std::size_t i = 0; i < isFree.size(); ++i)
            if (isFree[i]) columns.push_back(static_cast<Eigen::Index>(i));
        if (columns.empty()) return;
        for (const Eigen::Index column : columns) step[column] = 0.0;
        const Eigen::Index data = jacobian_.rows();
        const Eigen::Index free = std::ssize(columns);
        Eigen::MatrixXd matrix = Eigen::MatrixXd::Zero(data + free, free);
        Eigen::VectorXd right = Eigen::VectorXd::Zero(data + free);
        right.head(data) = -(ResidualsOf(best_) + jacobian_ * step);
        for (Eigen::Index i = 0; i < free; ++i) {
            const Eigen::Index column = columns[static_cast<std::size_t>(i)];
            matrix.col(i).head(data) = jacobian_.col(column);
            matrix(data + i, i) = std::sqrt(damping_) * longest_[column];
        }
        const Eigen::VectorXd solved = matrix.householderQr().solve(right);
        for (Eigen::Index i = 0; i < free; ++i) step[columns[static_cast<std::size_t>(i)]] = solved[i];
    }

    FitProblem& problem_;
    const LocalFitSettings& settings_;
    int evaluationsBefore_;
    std::vector<std::size_t> varied_;
    std::vector<bool> isFree_;
    Trial best_;
    Eigen::MatrixXd jacobian_;
    Eigen::VectorXd longest_;  // of each column so far
    double damping_ = kFirstDamping;
    double growth_ = 2.0;
};

}  // namespace

LocalFit FitByGaussNewton(FitProblem& problem, const FitPoint& start, const LocalFitSettings& settings) {
    return GaussNewton(problem, settings).Fit(start);
}

}  // namespace qvre
