#pragma once

#include <array>
#include <string>
#include <vector>

#include "fit/FitProblem.h"
#include "foundation/Words.h"

namespace qvre {

/// Why a search ended.
enum class FitStop { kStep, kGradient, kDecrease, kRestarts, kLimit, kInterrupted, kFailed };

template <>
inline constexpr auto kWords<FitStop> =
    std::to_array<Word<FitStop>>({{"converged: the parameters change no more", FitStop::kStep},
                                  {"converged: the misfit has no slope", FitStop::kGradient},
                                  {"converged: the misfit falls no more", FitStop::kDecrease},
                                  {"converged: all restarts made", FitStop::kRestarts},
                                  {"limit of evaluations reached", FitStop::kLimit},
                                  {"interrupted", FitStop::kInterrupted},
                                  {"failed", FitStop::kFailed}});

constexpr bool IsConverged(FitStop stop) {
    return stop < FitStop::kLimit;
}

/// When a local fit ends, and how it differentiates.
struct LocalFitSettings {
    int mostEvaluations = 500;
    double stepTolerance = 1e-4;       ///< of the scale of each parameter
    double gradientTolerance = 1e-8;   ///< cosine between the residuals and their change with a parameter
    double decreaseTolerance = 1e-10;  ///< of the misfit
    double differenceStep = 1e-3;      ///< of the scale: small against it, large against the noise of numbers
    std::vector<bool> isHeld = {};     ///< which parameters stay; empty: none
};

struct LocalFit {
    Trial best;  ///< without a point when the start failed
    FitStop stop = FitStop::kFailed;
    std::string detail;  ///< why it failed
    int evaluations = 0;
};

/// Least squares from a start within the bounds by the Gauss-Newton method with damping [1]: the damping
/// scales with the columns of the Jacobian [2], which forward differences of one batch give; a parameter that
/// meets its bound stays there until the slope leads back [3]. A trial that fails is taken for a bad one.
///
/// 1. K. Madsen, H. B. Nielsen, O. Tingleff, Methods for non-linear least squares problems, 2nd ed. (2004)
/// 2. J. J. More, Lecture Notes in Mathematics 630, 105 (1978)
/// 3. J. Nocedal, S. J. Wright, Numerical Optimization, 2nd ed. (2006), section 16.7
LocalFit FitByGaussNewton(FitProblem& problem, const FitPoint& start, const LocalFitSettings& settings = {});

/// The same minimum by quadratic models through points, one evaluation at a time: BOBYQA (M. J. D. Powell,
/// report NA2009/06, Cambridge, 2009); for one parameter, which that does not take, the simplex of Nelder and
/// Mead. It needs more evaluations, but no derivatives: for an R that steps or has kinks. The gradient's
/// tolerance and the step of differences do not count.
LocalFit FitWithoutDerivatives(FitProblem& problem, const FitPoint& start,
                               const LocalFitSettings& settings = {});

}  // namespace qvre
