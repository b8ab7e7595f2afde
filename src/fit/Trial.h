#pragma once

#include <limits>
#include <string>
#include <vector>

#include "fit/ParameterSpace.h"

namespace qvre {

/// What the calculation at one point comes to.
struct Evaluation {
    /// sqrt(weight) (calculated - measured)/sigma, the same data at every point. Without measured sigmas any
    /// common unit will do for the minimum and its noise errors, but restraints are weighed in this unit.
    std::vector<double> residuals;
    double r = 0.0;                ///< R-factor of all data: what the R level refers to
    std::vector<double> dataSetR;  ///< R-factor of each data set
    double seconds = 0.0;
    std::string failure;  ///< why there are no values; empty: there are
};

/// A point with its evaluation.
struct Trial {
    FitPoint point;
    Evaluation evaluation;  ///< the residuals of the restraints stand behind those of the data
    double misfit =
        std::numeric_limits<double>::infinity();  ///< sum of the squared residuals; infinite: failed

    bool HasFailed() const { return !evaluation.failure.empty(); }
};

}  // namespace qvre
