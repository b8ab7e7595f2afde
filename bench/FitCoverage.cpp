// Whether the errors of a fit are what they claim, and what the global search is worth, on a scattering model
// of two atoms that costs nothing. Prints two tables.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <string>
#include <vector>

#include "fit/EvolutionSearch.h"
#include "fit/FitErrors.h"
#include "fit/FitProblem.h"
#include "fit/LocalFit.h"
#include "fit/RLevel.h"
#include "fit/RandomNumbers.h"
#include "fit/SobolPoints.h"

using namespace qvre;

namespace {

constexpr double kWaveNumber = 12.0;  // 1/angstrom
constexpr double kMeanCounts = 2000.0;
constexpr int kSeeds = 1000;
constexpr int kAngles = 120;
constexpr int kSearches = 50;
constexpr int kMost = 20000;  // evaluations of a search

/// Single scattering by an atom above the emitter and one aside: path differences r - r cos(angle between).
std::vector<double> Counts(const FitPoint& p) {
    const double height = p[0];
    const double shift = p[1];
    const double strength = p[2];
    std::vector<double> counts;
    for (int i = 0; i < kAngles; ++i) {
        const double theta = (-70.0 + 140.0 * i / (kAngles - 1)) * std::numbers::pi / 180.0;
        const std::array<std::array<double, 2>, 2> atoms = {{{0.3, height}, {2.5 + shift, 0.4 * height}}};
        double chi = 0.0;
        for (const auto& [x, z] : atoms) {
            const double r = std::hypot(x, z);
            const double along = x * std::sin(theta) + z * std::cos(theta);
            chi +=
                strength / r * std::exp(-2.0 * (1.0 - along / r)) * std::cos(kWaveNumber * (r - along) + 0.6);
        }
        counts.push_back(kMeanCounts * (1.0 + chi));
    }
    return counts;
}

const FitPoint kTruth = {2.3, 0.12, 0.9};

class SimulatedMeasurement : public FitObjective {
public:
    explicit SimulatedMeasurement(std::uint64_t seed) : measured_(Counts(kTruth)) {
        RandomNumbers random{seed};
        for (double& count : measured_) {
            sigma_.push_back(std::sqrt(count));
            count += sigma_.back() * random.Normal();
            const double chi = count / kMeanCounts - 1.0;
            power_ += chi * chi;
        }
    }

    std::vector<Evaluation> Evaluate(const std::vector<FitPoint>& points) override {
        std::vector<Evaluation> evaluations;
        for (const FitPoint& point : points) {
            Evaluation evaluation;
            const std::vector<double> calculated = Counts(point);
            for (std::size_t i = 0; i < measured_.size(); ++i) {
                const double difference = calculated[i] - measured_[i];
                evaluation.residuals.push_back(difference / sigma_[i]);
                evaluation.r += difference * difference / (kMeanCounts * kMeanCounts * power_);
            }
            evaluations.push_back(std::move(evaluation));
        }
        return evaluations;
    }

private:
    std::vector<double> measured_;
    std::vector<double> sigma_;
    double power_ = 0.0;  // sum of chi^2
};

ParameterSpace Space(double height, double shift, double strength) {
    return ParameterSpace(
        {{.name = "height", .start = height, .lower = 1.5, .upper = 3.1, .unit = "angstrom"},
         {.name = "shift", .start = shift, .lower = -0.6, .upper = 0.6, .unit = "angstrom"},
         {.name = "strength", .start = strength, .lower = 0.2, .upper = 2.0}});
}

void PrintCoverage() {
    const ParameterSpace space = Space(2.33, 0.09, 1.0);
    std::array<int, 3> inNoise = {};
    std::array<int, 3> inLevel = {};
    std::array<double, 3> ratio = {};
    int evaluations = 0;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        SimulatedMeasurement measurement(seed);
        FitProblem problem(space, measurement);
        const LocalFit fit = FitByGaussNewton(problem, space.Start());
        const NoiseErrors errors = NoiseErrorsAt(problem, fit.best);
        for (std::size_t i = 0; i < 3; ++i) {
            const double sigma = errors.sigma[i].value_or(0.0);
            const RLevelError level = RLevelErrorAt(problem, fit.best, i, kAngles, 4.0 * sigma);
            inNoise[i] += std::abs(fit.best.point[i] - kTruth[i]) <= sigma ? 1 : 0;
            inLevel[i] +=
                (!level.lower || *level.lower <= kTruth[i]) && (!level.upper || *level.upper >= kTruth[i])
                    ? 1
                    : 0;
            if (level.lower && level.upper)
                ratio[i] += (*level.upper - *level.lower) / (2.0 * sigma * kSeeds);
        }
        evaluations += problem.evaluations;
    }
    fmt::print("{} simulated measurements of {} points; the errors hold the truth in\n", kSeeds, kAngles);
    for (std::size_t i = 0; i < 3; ++i)
        fmt::print(
            "  {:9} noise {:5.1f} % (68.3 expected)  R level {:5.1f} %  R level/noise {:.2f} (about "
            "{:.2f})\n",
            space.parameters[i].name, 100.0 * inNoise[i] / kSeeds, 100.0 * inLevel[i] / kSeeds, ratio[i],
            RLevelInNoiseErrors(kAngles, kAngles - 3));
    fmt::print("  {} evaluations a measurement, fit and all errors\n", evaluations / kSeeds);
}

/// Within 0.02 angstrom of the truth in both distances: the valley that a local fit then goes down.
bool IsFound(const FitPoint& point) {
    return std::abs(point[0] - kTruth[0]) < 0.02 && std::abs(point[1] - kTruth[1]) < 0.02;
}

int EvolutionEvaluations(std::uint64_t seed, int most) {
    const ParameterSpace space = Space(1.8, -0.4, 0.5);
    SimulatedMeasurement measurement(seed);
    FitProblem problem(space, measurement);
    EvolutionSearch search(space.ToUnit(space.Start()),
                           {.seed = seed, .mostEvaluations = most, .restarts = 100, .stepTolerance = 1e-3});
    Trial best;
    while (!search.IsDone()) {
        std::vector<FitPoint> points = search.Ask();
        for (FitPoint& point : points) point = space.FromUnit(point);
        std::vector<double> misfits;
        for (Trial& trial : problem.Evaluate(points)) {
            misfits.push_back(trial.misfit);
            if (trial.misfit < best.misfit) best = std::move(trial);
        }
        search.Tell(misfits);
        if (IsFound(best.point)) return search.Evaluations();
    }
    return most;
}

int SobolEvaluations(std::uint64_t seed, int most) {
    const ParameterSpace space = Space(1.8, -0.4, 0.5);
    SimulatedMeasurement measurement(seed);
    FitProblem problem(space, measurement);
    Trial best;
    int made = 0;
    for (const auto& unit : SobolPoints(3, static_cast<std::size_t>(most), seed)) {
        Trial trial = problem.EvaluateOne(space.FromUnit(unit));
        ++made;
        if (trial.misfit < best.misfit) best = std::move(trial);
        if (IsFound(best.point)) return made;
    }
    return most;
}

void PrintSearches() {
    fmt::print("evaluations until the best is within 0.02 angstrom of the truth, {} seeds\n", kSearches);
    const auto print = [](const std::string& name, int (*search)(std::uint64_t, int)) {
        std::vector<int> needed;
        for (std::uint64_t seed = 1; seed <= kSearches; ++seed) needed.push_back(search(seed, kMost));
        std::sort(needed.begin(), needed.end());
        fmt::print("  {:14} median {:6}  worst of nine in ten {:6}  not found {}\n", name,
                   needed[kSearches / 2], needed[kSearches * 9 / 10 - 1],
                   std::count(needed.begin(), needed.end(), kMost));
    };
    print("evolution", EvolutionEvaluations);
    print("Sobol points", SobolEvaluations);
}

}  // namespace

int main() {
    PrintCoverage();
    PrintSearches();
}
