#include "fit/EvolutionSearch.h"

#include <Eigen/Eigenvalues>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

#include "foundation/Interruption.h"

namespace qvre {

namespace {

constexpr double kRim = 0.05;
constexpr double kLargestCondition = 1e14;
constexpr double kLargestSigma = 10.0;  // of the cube: nothing leads anywhere

/// From the line to [0, 1]: the identity between the rims, a parabola with its vertex at the bound in them.
double Folded(double coordinate) {
    constexpr double kHalf = 1.0 + 2.0 * kRim;
    double along = std::fmod(coordinate + kRim, 2.0 * kHalf);
    if (along < 0.0) along += 2.0 * kHalf;
    if (along > kHalf)
        along = 2.0 * kHalf - along;  // now from 0 at the lower bound to kHalf at the upper one
    if (along < 2.0 * kRim) return along * along / (4.0 * kRim);
    const double back = kHalf - along;
    if (back < 2.0 * kRim) return 1.0 - back * back / (4.0 * kRim);
    return along - kRim;
}

double Unfolded(double unit) {
    if (unit < kRim) return std::sqrt(4.0 * kRim * unit) - kRim;
    if (unit > 1.0 - kRim) return 1.0 + kRim - std::sqrt(4.0 * kRim * (1.0 - unit));
    return unit;
}

}  // namespace

/// The constants of the tutorial's table 1, for a population of which so many give the next mean.
struct EvolutionSearch::Weights {
    Weights(Eigen::Index dimension, std::size_t parents) {
        const auto n = static_cast<double>(dimension);
        weight.resize(parents);
        for (std::size_t i = 0; i < parents; ++i)
            weight[i] = std::log(static_cast<double>(parents) + 0.5) - std::log(static_cast<double>(i) + 1.0);
        const double sum = std::accumulate(weight.begin(), weight.end(), 0.0);
        double squares = 0.0;
        for (double& of : weight) {
            of /= sum;
            squares += of * of;
        }
        effective = 1.0 / squares;
        sigmaRate = (effective + 2.0) / (n + effective + 5.0);
        sigmaDamping = 1.0 + 2.0 * std::max(0.0, std::sqrt((effective - 1.0) / (n + 1.0)) - 1.0) + sigmaRate;
        pathRate = (4.0 + effective / n) / (n + 4.0 + 2.0 * effective / n);
        rankOne = 2.0 / ((n + 1.3) * (n + 1.3) + effective);
        rankMu = std::min(1.0 - rankOne,
                          2.0 * (effective - 2.0 + 1.0 / effective) / ((n + 2.0) * (n + 2.0) + effective));
        normalLength = std::sqrt(n) * (1.0 - 1.0 / (4.0 * n) + 1.0 / (21.0 * n * n));
    }

    std::vector<double> weight;
    double effective = 0.0;
    double sigmaRate = 0.0;
    double sigmaDamping = 0.0;
    double pathRate = 0.0;
    double rankOne = 0.0;
    double rankMu = 0.0;
    double normalLength = 0.0;  ///< expected, of a vector of normal deviates
};

EvolutionSearch::EvolutionSearch(const std::vector<double>& startInUnitCube,
                                 const EvolutionSettings& evolutionSettings)
    : settings(evolutionSettings), random_{evolutionSettings.seed} {
    Eigen::VectorXd mean(std::ssize(startInUnitCube));
    for (Eigen::Index i = 0; i < mean.size(); ++i)
        mean[i] = Unfolded(startInUnitCube[static_cast<std::size_t>(i)]);
    const double usual = 4.0 + std::floor(3.0 * std::log(static_cast<double>(mean.size())));
    population_ = std::max(settings.population > 0 ? settings.population : static_cast<int>(usual), 4);
    Begin(mean);
}

void EvolutionSearch::Begin(const Eigen::VectorXd& mean) {
    mean_ = mean;
    sigma_ = settings.firstStep;
    sigmaPath_ = Eigen::VectorXd::Zero(mean.size());
    covariancePath_ = Eigen::VectorXd::Zero(mean.size());
    covariance_ = Eigen::MatrixXd::Identity(mean.size(), mean.size());
    history_.clear();
    generationOfRestart_ = 0;
}

std::vector<std::vector<double>> EvolutionSearch::Ask() {
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> axes(covariance_);
    const Eigen::VectorXd lengths = axes.eigenvalues().cwiseMax(0.0).cwiseSqrt();
    asked_.resize(Dimension(), population_);
    afterAsking_ = random_;
    std::vector<std::vector<double>> points;
    for (Eigen::Index k = 0; k < population_; ++k) {
        Eigen::VectorXd deviates(Dimension());
        for (double& deviate : deviates) deviate = afterAsking_.Normal();
        asked_.col(k) = mean_ + sigma_ * (axes.eigenvectors() * lengths.cwiseProduct(deviates));
        std::vector<double> point;
        for (const double coordinate : asked_.col(k)) point.push_back(Folded(coordinate));
        points.push_back(std::move(point));
    }
    return points;
}

void EvolutionSearch::Tell(const std::vector<double>& misfits) {
    std::vector<std::size_t> ranked;
    for (std::size_t i = 0; i < misfits.size(); ++i)
        if (std::isfinite(misfits[i])) ranked.push_back(i);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [&misfits](std::size_t a, std::size_t b) { return misfits[a] < misfits[b]; });
    random_ = afterAsking_;
    ++generation_;
    ++generationOfRestart_;
    evaluations_ += static_cast<int>(misfits.size());
    if (!ranked.empty()) Move(ranked);
    const double best = ranked.empty() ? std::numeric_limits<double>::max() : misfits[ranked.front()];
    const double worst = ranked.empty() ? best : misfits[ranked.back()];
    if (!HasConverged(best, worst)) return;
    ++restart_;
    population_ *= 2;
    Eigen::VectorXd mean(Dimension());
    for (double& coordinate : mean) coordinate = random_.Uniform();
    Begin(mean);
}

/// Equations 39 to 47 of the tutorial with the better half of the population, or all that did not fail.
void EvolutionSearch::Move(const std::vector<std::size_t>& ranked) {
    const Weights with(Dimension(), std::min(ranked.size(), static_cast<std::size_t>(population_) / 2));
    const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> axes(covariance_);
    const Eigen::VectorXd lengths = axes.eigenvalues().cwiseMax(1e-300).cwiseSqrt();

    Eigen::VectorXd step = Eigen::VectorXd::Zero(Dimension());
    Eigen::MatrixXd spread = Eigen::MatrixXd::Zero(Dimension(), Dimension());
    for (std::size_t i = 0; i < with.weight.size(); ++i) {
        const Eigen::VectorXd way = (asked_.col(static_cast<Eigen::Index>(ranked[i])) - mean_) / sigma_;
        step += with.weight[i] * way;
        spread += with.weight[i] * (way * way.transpose());
    }
    mean_ += sigma_ * step;

    const Eigen::VectorXd white =
        axes.eigenvectors() * (axes.eigenvectors().transpose() * step).cwiseQuotient(lengths);
    sigmaPath_ = (1.0 - with.sigmaRate) * sigmaPath_ +
                 std::sqrt(with.sigmaRate * (2.0 - with.sigmaRate) * with.effective) * white;
    const double pathLength = sigmaPath_.norm();
    const double start = std::sqrt(1.0 - std::pow(1.0 - with.sigmaRate, 2.0 * generationOfRestart_));
    const auto n = static_cast<double>(Dimension());
    const bool isSteady = pathLength / start < (1.4 + 2.0 / (n + 1.0)) * with.normalLength;
    const double gain = isSteady ? 1.0 : 0.0;
    covariancePath_ = (1.0 - with.pathRate) * covariancePath_ +
                      gain * std::sqrt(with.pathRate * (2.0 - with.pathRate) * with.effective) * step;
    const double lost = (1.0 - gain) * with.pathRate * (2.0 - with.pathRate);
    covariance_ = (1.0 - with.rankOne - with.rankMu + with.rankOne * lost) * covariance_ +
                  with.rankOne * (covariancePath_ * covariancePath_.transpose()) + with.rankMu * spread;
    sigma_ *= std::exp(with.sigmaRate / with.sigmaDamping * (pathLength / with.normalLength - 1.0));
}

bool EvolutionSearch::HasConverged(double best, double worst) {
    const auto n = static_cast<double>(Dimension());
    const auto remembered = static_cast<std::size_t>(10.0 + std::ceil(30.0 * n / population_));
    history_.push_back(best);
    if (history_.size() > remembered) history_.erase(history_.begin());
    const auto [least, most] = std::minmax_element(history_.begin(), history_.end());
    const bool isLevel = history_.size() == remembered &&
                         std::max(*most, worst) - *least <= settings.decreaseTolerance * std::abs(*least);
    const Eigen::VectorXd variances =
        Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd>(covariance_, Eigen::EigenvaluesOnly).eigenvalues();
    const double longest = sigma_ * std::sqrt(variances.maxCoeff());
    const double generations = 100.0 + 150.0 * (n + 3.0) * (n + 3.0) / std::sqrt(population_);
    return isLevel || longest < settings.stepTolerance || longest > kLargestSigma ||
           variances.maxCoeff() > kLargestCondition * variances.minCoeff() ||
           generationOfRestart_ >= generations;
}

GlobalFit SearchGlobally(FitProblem& problem, EvolutionSearch& search) {
    Trial best;
    problem.keepsResiduals = false;
    FitStop stop = FitStop::kInterrupted;
    try {
        while (!search.IsDone()) {
            std::vector<FitPoint> points = search.Ask();
            for (FitPoint& point : points) point = problem.space.FromUnit(point);
            ++problem.generation;
            std::vector<double> misfits;
            for (Trial& trial : problem.Evaluate(points)) {
                misfits.push_back(trial.misfit);
                if (trial.misfit < best.misfit) best = std::move(trial);
            }
            search.Tell(misfits);
        }
        stop = best.point.empty() ? FitStop::kFailed : search.Stop();
    } catch (const Interruption&) {  // NOLINT(bugprone-empty-catch): what was done is the result
    }
    problem.keepsResiduals = true;
    return {.best = std::move(best), .stop = stop};
}

}  // namespace qvre
