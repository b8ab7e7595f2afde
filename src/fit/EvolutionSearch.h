#pragma once

#include <Eigen/Core>
#include <cstdint>
#include <vector>

#include "fit/FitProblem.h"
#include "fit/LocalFit.h"
#include "fit/RandomNumbers.h"

namespace qvre {

struct EvolutionSettings {
    std::uint64_t seed = 1;
    int population = 0;      ///< points a generation; 0: 4 + 3 ln(number of parameters)
    double firstStep = 0.3;  ///< standard deviation of the first generation, of the room of each parameter
    int mostEvaluations = 5000;       ///< the generation in which they are reached is finished
    int restarts = 2;                 ///< each with twice the population, from a random point
    double stepTolerance = 1e-4;      ///< of the room of each parameter
    double decreaseTolerance = 1e-9;  ///< of the misfit, over the last generations
};

/// Search for the least misfit in the unit cube by generations: the evolution strategy with adaptation of the
/// covariance matrix [1], which starts again with twice the population when it has converged [2].
///
/// The strategy itself knows no bounds. Its coordinates are folded into the cube by a map that repeats
/// itself and is smooth: a twentieth of the room before a bound, the way to it becomes a parabola with its
/// vertex there. A minimum at a bound is then one like any other.
///
/// The points of a generation may be evaluated in any order. All depends on the seed alone: a search that is
/// told the same misfits again asks for the same points.
///
/// 1. N. Hansen, The CMA evolution strategy: a tutorial, arXiv:1604.00772, with positive weights
/// 2. A. Auger, N. Hansen, Proc. IEEE Congress on Evolutionary Computation 2005, p. 1769
class EvolutionSearch {
public:
    EvolutionSearch(const std::vector<double>& startInUnitCube, const EvolutionSettings& evolutionSettings);

    bool IsDone() const { return restart_ > settings.restarts || evaluations_ >= settings.mostEvaluations; }
    FitStop Stop() const { return restart_ > settings.restarts ? FitStop::kRestarts : FitStop::kLimit; }

    /// The points of the next generation, the same ones until it is told.
    std::vector<std::vector<double>> Ask();

    /// Their misfits, in their order; what is not finite has failed and is passed over.
    void Tell(const std::vector<double>& misfits);

    int Generation() const { return generation_; }    ///< generations told so far
    int Evaluations() const { return evaluations_; }  ///< misfits told so far

    EvolutionSettings settings;

private:
    struct Weights;

    Eigen::Index Dimension() const { return mean_.size(); }
    void Begin(const Eigen::VectorXd& mean);
    void Move(const std::vector<std::size_t>& ranked);
    bool HasConverged(double best, double worst);

    RandomNumbers random_;
    int generation_ = 0;
    int evaluations_ = 0;
    int restart_ = 0;
    int population_ = 0;
    int generationOfRestart_ = 0;
    double sigma_ = 0.0;
    Eigen::VectorXd mean_;
    Eigen::VectorXd sigmaPath_;
    Eigen::VectorXd covariancePath_;
    Eigen::MatrixXd covariance_;
    std::vector<double> history_;  // the best misfit of the last generations

    Eigen::MatrixXd asked_;  // a column a point, before it is folded
    RandomNumbers afterAsking_;
};

struct GlobalFit {
    Trial best;  ///< without a point when every evaluation failed
    FitStop stop = FitStop::kLimit;
};

/// Goes on with a search until it is done. An Interruption ends it at the last whole generation. The trial
/// that comes back may lack its residuals.
GlobalFit SearchGlobally(FitProblem& problem, EvolutionSearch& search);

}  // namespace qvre
