#pragma once

#include <Eigen/Core>
#include <optional>

#include "report/compare/Measurement.h"

namespace qvre {

/// Takes out of residuals what a change of the measured background could explain.
///
/// The background of a measurement is found from its points, with their noise. With chi = I/B - 1 an error of
/// B by the part b(theta) moves chi by -(1 + chi) b: one direction in the space of the residuals for each
/// freedom of the background, such as the coefficients of a polynomial. Residuals that are orthogonal to all
/// of these, in the metric of their variances, are those of a fit in which the background is free too.
class FreeBackground {
public:
    /// `chi` and `root` are the measured modulation of directions and the roots of the weights of their
    /// squared residuals. No model: the values were a modulation as measured, and nothing is free.
    FreeBackground(const std::vector<double>& theta, const std::vector<double>& chi,
                   const Eigen::VectorXd& root, const std::optional<BackgroundModel>& model);

    /// Of residuals that are multiplied by the roots of their weights.
    Eigen::VectorXd WithoutIt(const Eigen::VectorXd& residuals) const;

private:
    Eigen::MatrixXd directions_;  // orthonormal columns
};

}  // namespace qvre
