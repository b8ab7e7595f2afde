#pragma once

#include <Eigen/Core>
#include <string>
#include <vector>

#include "fit/FitProblem.h"

namespace qvre {

/// Change of the residuals with the parameters in the unit cube.
struct Jacobian {
    Eigen::MatrixXd columns;  ///< a row a residual, a column a parameter of the list
    std::string failure;      ///< not empty: it could not be had
};

enum class Differences { kForward, kCentral };

/// By differences over `step` scales of each parameter, asked for as one batch. Where a point would leave the
/// bounds or fails, the difference is the one-sided one to the other side.
Jacobian DifferenceJacobian(FitProblem& problem, const Trial& at, const std::vector<std::size_t>& parameters,
                            double step, Differences differences);

Eigen::Map<const Eigen::VectorXd> ResidualsOf(const Trial& trial);

}  // namespace qvre
