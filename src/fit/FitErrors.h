#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "fit/FitProblem.h"

namespace qvre {

/// Standard errors of the parameters from the noise of the data.
///
/// The covariance is s^2 (J^T J)^-1 with the Jacobian J of the residuals at the minimum and the variance of
/// unit weight s^2 = chi^2/(data + restraints - parameters): the scatter of the residuals themselves, so that
/// the unit of the sigmas drops out (W. H. Press et al., Numerical Recipes, 3rd ed. (2007), section 15.4).
struct NoiseErrors {
    std::vector<std::optional<double>> sigma;     ///< in the units of the parameters
    std::vector<std::string> reason;              ///< of those that have none
    std::vector<std::vector<double>> covariance;  ///< 0 for those without
    double chiSquared = 0.0;                      ///< the misfit
    double degreesOfFreedom = 0.0;

    double Correlation(std::size_t i, std::size_t j) const;  ///< 0 if one has no error
};

/// Of a minimum. The Jacobian is of central differences, as one batch. A parameter has no error at a bound,
/// where it is taken for known; nor if no residual depends on it, or if a change of it is as good as one of
/// others.
NoiseErrors NoiseErrorsAt(FitProblem& problem, const Trial& best, double differenceStep = 1e-3);

/// Standard errors of the derived quantities from the covariance by their gradients, taken within the bounds;
/// none if it hangs on a parameter that has none, or has no value there.
std::vector<std::optional<double>> DerivedErrors(const ParameterSpace& space, const FitPoint& best,
                                                 const NoiseErrors& errors);

}  // namespace qvre
