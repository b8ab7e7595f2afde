#include "fit/FitErrors.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <Eigen/SVD>
#include <algorithm>
#include <cmath>

#include "fit/Jacobian.h"

namespace qvre {

namespace {

constexpr double kAtBound = 1e-9;       // of the room of a parameter
constexpr double kNothing = 1e-9;       // of the longest column: the rounding of differences
constexpr double kSingular = 1e-5;      // of the largest singular value: the accuracy of the differences
constexpr double kTakesPart = 0.1;      // component of a unit vector
constexpr double kGradientStep = 1e-5;  // of the scale

/// Names what keeps parameters from having an error: a unit vector of parameters along which nothing changes.
void ExcludeDirection(const ParameterSpace& space, const std::vector<std::size_t>& parameters,
                      const Eigen::VectorXd& direction, NoiseErrors& errors) {
    std::vector<std::size_t> part;
    for (std::size_t i = 0; i < parameters.size(); ++i)
        if (std::abs(direction[static_cast<Eigen::Index>(i)]) > kTakesPart) part.push_back(parameters[i]);
    for (const std::size_t one : part) {
        std::vector<std::string> others;
        for (const std::size_t other : part)
            if (other != one) others.push_back(space.parameters[other].name);
        errors.reason[one] =
            fmt::format("the data cannot tell it from a change of {}", fmt::join(others, " and "));
    }
}

/// Parameters inside their bounds on which something depends, their columns, and the reasons of the others.
std::vector<std::size_t> Determined(const ParameterSpace& space, const Trial& best,
                                    const Eigen::MatrixXd& columns, NoiseErrors& errors) {
    const FitPoint unit = space.ToUnit(best.point);
    const double longest = columns.colwise().norm().maxCoeff();
    std::vector<std::size_t> determined;
    for (std::size_t i = 0; i < unit.size(); ++i) {
        if (columns.col(static_cast<Eigen::Index>(i)).norm() <= kNothing * longest)
            errors.reason[i] = "nothing depends on it";
        else if (unit[i] <= kAtBound)
            errors.reason[i] = "it is at its lower bound";
        else if (unit[i] >= 1.0 - kAtBound)
            errors.reason[i] = "it is at its upper bound";
        else
            determined.push_back(i);
    }
    return determined;
}

}  // namespace

double NoiseErrors::Correlation(std::size_t i, std::size_t j) const {
    return sigma[i] && sigma[j] ? covariance[i][j] / (*sigma[i] * *sigma[j]) : 0.0;
}

NoiseErrors NoiseErrorsAt(FitProblem& problem, const Trial& best, double differenceStep) {
    const ParameterSpace& space = problem.space;
    const std::size_t count = space.parameters.size();
    NoiseErrors errors;
    errors.sigma.resize(count);
    errors.reason.resize(count);
    errors.covariance.assign(count, std::vector<double>(count, 0.0));
    errors.chiSquared = best.misfit;

    std::vector<std::size_t> all(count);
    for (std::size_t i = 0; i < count; ++i) all[i] = i;
    const Jacobian jacobian = DifferenceJacobian(problem, best, all, differenceStep, Differences::kCentral);
    if (!jacobian.failure.empty()) {
        std::fill(errors.reason.begin(), errors.reason.end(), jacobian.failure);
        return errors;
    }
    const std::vector<std::size_t> free = Determined(space, best, jacobian.columns, errors);
    errors.degreesOfFreedom =
        static_cast<double>(jacobian.columns.rows() - std::ssize(free)) - problem.SolvedAlong();
    if (free.empty()) return errors;
    if (errors.degreesOfFreedom <= 0.0) {
        for (const std::size_t i : free) errors.reason[i] = "there are no more data than parameters";
        return errors;
    }

    // Columns of length 1, so that what is singular does not hang on the units.
    Eigen::MatrixXd columns(jacobian.columns.rows(), std::ssize(free));
    Eigen::VectorXd unitLength(std::ssize(free));  // change of each parameter that belongs to it
    for (std::size_t i = 0; i < free.size(); ++i) {
        const auto column = jacobian.columns.col(static_cast<Eigen::Index>(free[i]));
        columns.col(static_cast<Eigen::Index>(i)) = column.normalized();
        const FitParameter& parameter = space.parameters[free[i]];
        unitLength[static_cast<Eigen::Index>(i)] = (parameter.upper - parameter.lower) / column.norm();
    }
    const Eigen::JacobiSVD<Eigen::MatrixXd, Eigen::HouseholderQRPreconditioner> svd(
        columns, Eigen::ComputeThinU | Eigen::ComputeThinV);
    const double variance = errors.chiSquared / errors.degreesOfFreedom;
    Eigen::MatrixXd covariance = Eigen::MatrixXd::Zero(std::ssize(free), std::ssize(free));
    for (Eigen::Index k = 0; k < svd.singularValues().size(); ++k) {
        const Eigen::VectorXd direction = svd.matrixV().col(k);
        const double singular = svd.singularValues()[k];
        if (singular < kSingular * svd.singularValues()[0])
            ExcludeDirection(space, free, direction, errors);
        else
            covariance += variance / (singular * singular) * direction * direction.transpose();
    }
    for (std::size_t i = 0; i < free.size(); ++i) {
        for (std::size_t j = 0; j < free.size(); ++j) {
            if (!errors.reason[free[i]].empty() || !errors.reason[free[j]].empty()) continue;
            const auto row = static_cast<Eigen::Index>(i);
            const auto column = static_cast<Eigen::Index>(j);
            errors.covariance[free[i]][free[j]] =
                covariance(row, column) * unitLength[row] * unitLength[column];
        }
        if (errors.reason[free[i]].empty())
            errors.sigma[free[i]] = std::sqrt(errors.covariance[free[i]][free[i]]);
    }
    return errors;
}

std::vector<std::optional<double>> DerivedErrors(const ParameterSpace& space, const FitPoint& best,
                                                 const NoiseErrors& errors) {
    const std::size_t count = best.size();
    std::vector<std::vector<double>> gradients;
    for (std::size_t i = 0; i < count; ++i) {
        const FitParameter& of = space.parameters[i];
        const double step = kGradientStep * space.UnitScale(i) * (of.upper - of.lower);
        FitPoint above = best;
        FitPoint below = best;
        above[i] = std::min(above[i] + step, of.upper);
        below[i] = std::max(below[i] - step, of.lower);
        std::vector<double> gradient = space.Derived(above);
        const std::vector<double> values = space.Derived(below);
        for (std::size_t k = 0; k < gradient.size(); ++k)
            gradient[k] = (gradient[k] - values[k]) / (above[i] - below[i]);
        gradients.push_back(std::move(gradient));
    }
    std::vector<std::optional<double>> result;
    for (std::size_t k = 0; k < space.derived.size(); ++k) {
        double variance = 0.0;
        bool isKnown = true;
        for (std::size_t i = 0; i < count; ++i) {
            isKnown = isKnown && (errors.sigma[i] || gradients[i][k] == 0.0);
            for (std::size_t j = 0; j < count; ++j)
                variance += gradients[i][k] * errors.covariance[i][j] * gradients[j][k];
        }
        isKnown = isKnown && std::isfinite(variance);  // a derivative may have no value
        result.push_back(isKnown ? std::optional(std::sqrt(std::max(variance, 0.0))) : std::nullopt);
    }
    return result;
}

}  // namespace qvre
