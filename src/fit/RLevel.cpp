#include "fit/RLevel.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace qvre {

namespace {

constexpr int kMostPoints = 12;           // of one side
constexpr double kLevelTolerance = 0.02;  // of the rise: a percent of the distance
constexpr double kLeastBracket = 1e-3;    // of the distance: R steps there
constexpr double kFurtherThanParabola = 1.1;
constexpr double kAtBound = 1e-9;  // of the room
constexpr double kNotDone = 1e-3;  // of the misfit: more than what the tolerances of fits leave

/// One side of the profile of a parameter.
class ProfileSide {
public:
    ProfileSide(FitProblem& problem, const Trial& best, std::size_t parameter, double sign, double level,
                LocalFitSettings settings)
        : problem_(problem),
          best_(best),
          parameter_(parameter),
          sign_(sign),
          level_(level),
          settings_(std::move(settings)) {
        settings_.isHeld.resize(best.point.size(), false);
        settings_.isHeld[parameter] = true;
    }

    std::optional<double> Crossing(double firstStep, std::vector<ProfilePoint>& profile,
                                   std::string& reason) {
        const FitParameter& of = problem_.space.parameters[parameter_];
        const double bound = sign_ > 0.0 ? of.upper : of.lower;
        const std::string boundName = sign_ > 0.0 ? "upper" : "lower";
        const double room = std::abs(bound - best_.point[parameter_]);
        if (room <= kAtBound * (of.upper - of.lower)) {
            reason = fmt::format("it is at its {} bound", boundName);
            return std::nullopt;
        }
        End inside{0.0, 0.0};
        std::optional<End> outside;
        const FitPoint* from = &best_.point;
        double distance = std::min(firstStep, room);
        for (int i = 0; i < kMostPoints; ++i) {
            const double value = distance == room ? bound : best_.point[parameter_] + sign_ * distance;
            FitPoint start = *from;
            start[parameter_] = value;
            LocalFit fit = FitByGaussNewton(problem_, start, settings_);
            if (fit.stop == FitStop::kFailed || fit.stop == FitStop::kInterrupted) {
                reason = fmt::format("its profile ends at {}: {}", value,
                                     fit.stop == FitStop::kFailed ? fit.detail : "interrupted");
                return std::nullopt;
            }
            const End end{distance, RootRise(fit.best)};
            profile.push_back({value, std::move(fit.best)});
            if (end.rise < RootLevel()) {
                inside = end;
                from = &profile.back().trial.point;
            } else {
                outside = end;
            }
            if (!outside && distance == room) {
                reason = fmt::format("R stays within the level up to its {} bound", boundName);
                return std::nullopt;
            }
            if (!outside) {
                distance = std::min(Further(inside), room);
                continue;
            }
            if (IsThere(inside, *outside)) break;
            distance = Between(inside, *outside);
        }
        if (!outside) {
            reason = fmt::format("R stays within the level as far as {}", profile.back().value);
            return std::nullopt;
        }
        return best_.point[parameter_] + sign_ * Interpolated(inside, *outside);
    }

private:
    /// A point of the profile by what is a straight line when R is a parabola.
    struct End {
        double distance = 0.0;
        double rise = 0.0;  ///< root of R - R_min
    };

    double RootRise(const Trial& trial) const {
        return std::sqrt(std::max(trial.evaluation.r - best_.evaluation.r, 0.0));
    }
    double RootLevel() const { return std::sqrt(level_ - best_.evaluation.r); }

    double Further(const End& inside) const {
        const double parabola = inside.rise > 0.0 ? inside.distance * RootLevel() / inside.rise : 1e300;
        return std::clamp(kFurtherThanParabola * parabola, 1.2 * inside.distance, 3.0 * inside.distance);
    }

    double Interpolated(const End& inside, const End& outside) const {
        return inside.distance + (outside.distance - inside.distance) * (RootLevel() - inside.rise) /
                                     (outside.rise - inside.rise);
    }

    /// Not too near to either end, lest one of them should stay for ever.
    double Between(const End& inside, const End& outside) const {
        const double width = outside.distance - inside.distance;
        return std::clamp(Interpolated(inside, outside), inside.distance + 0.05 * width,
                          outside.distance - 0.05 * width);
    }

    bool IsThere(const End& inside, const End& outside) const {
        const double rise = level_ - best_.evaluation.r;
        const auto isClose = [&](const End& end) {
            return std::abs(end.rise * end.rise - rise) < kLevelTolerance * rise;
        };
        return isClose(inside) || isClose(outside) ||
               outside.distance - inside.distance < kLeastBracket * outside.distance;
    }

    FitProblem& problem_;
    const Trial& best_;
    std::size_t parameter_;
    double sign_;
    double level_;
    LocalFitSettings settings_;
};

}  // namespace

double RLevel(double leastR, double independentData) {
    return leastR * (1.0 + std::sqrt(2.0 / independentData));
}

RLevelError RLevelErrorAt(FitProblem& problem, const Trial& best, std::size_t parameter,
                          double independentData, double firstStep, const LocalFitSettings& settings) {
    RLevelError error;
    error.profile.push_back({best.point[parameter], best});
    const double level = RLevel(best.evaluation.r, independentData);
    if (!(level > best.evaluation.r)) {
        error.lowerReason = error.upperReason = "R is 0 at the minimum, and no level lies above it";
        return error;
    }
    const FitParameter& of = problem.space.parameters[parameter];
    const double step =
        firstStep > 0.0 ? firstStep : problem.space.UnitScale(parameter) * (of.upper - of.lower);
    for (const double sign : {-1.0, 1.0}) {
        std::vector<ProfilePoint> profile;
        profile.reserve(kMostPoints);  // the fits start from points in it
        auto& end = sign < 0.0 ? error.lower : error.upper;
        auto& reason = sign < 0.0 ? error.lowerReason : error.upperReason;
        end = ProfileSide(problem, best, parameter, sign, level, settings).Crossing(step, profile, reason);
        for (ProfilePoint& point : profile) {
            const double least = error.better ? error.better->misfit : (1.0 - kNotDone) * best.misfit;
            if (point.trial.misfit < least) error.better = point.trial;
            error.profile.push_back(std::move(point));
        }
    }
    std::sort(error.profile.begin(), error.profile.end(),
              [](const ProfilePoint& a, const ProfilePoint& b) { return a.value < b.value; });
    return error;
}

double RLevelInNoiseErrors(double independentData, double degreesOfFreedom) {
    return std::sqrt(degreesOfFreedom * std::sqrt(2.0 / independentData));
}

}  // namespace qvre
