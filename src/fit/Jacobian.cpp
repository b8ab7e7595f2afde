#include "fit/Jacobian.h"

#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <optional>

namespace qvre {

namespace {

/// A point beside another one in the direction of one parameter.
struct Neighbour {
    std::size_t column = 0;
    double step = 0.0;  ///< in the unit cube, with its sign
    Trial trial;
};

class DifferenceTable {
public:
    DifferenceTable(FitProblem& problem, const Trial& at, const std::vector<std::size_t>& parameters,
                    double step)
        : problem_(problem), at_(at), unit_(problem.space.ToUnit(at.point)), parameters_(parameters) {
        for (const std::size_t parameter : parameters)
            steps_.push_back(step * problem.space.UnitScale(parameter));
    }

    bool HasRoom(std::size_t column, double sign) const {
        const double there = unit_[parameters_[column]] + sign * steps_[column];
        return there >= 0.0 && there <= 1.0;
    }

    /// The side that the bounds leave.
    double FirstSign(std::size_t column) const { return HasRoom(column, 1.0) ? 1.0 : -1.0; }

    void Want(std::size_t column, double sign) { wanted_.push_back({column, sign * steps_[column], {}}); }

    void Ask() {
        if (wanted_.empty()) return;
        std::vector<FitPoint> points;
        for (const Neighbour& neighbour : wanted_) {
            FitPoint unit = unit_;
            unit[parameters_[neighbour.column]] += neighbour.step;
            points.push_back(problem_.space.FromUnit(unit));
            // All other parameters stay to the last bit, which the way through the unit cube may cost.
            for (std::size_t i = 0; i < unit.size(); ++i)
                if (i != parameters_[neighbour.column]) points.back()[i] = at_.point[i];
        }
        std::vector<Trial> trials = problem_.Evaluate(points);
        for (std::size_t i = 0; i < trials.size(); ++i) {
            wanted_[i].trial = std::move(trials[i]);
            known_.push_back(std::move(wanted_[i]));
        }
        wanted_.clear();
    }

    const Neighbour* Find(std::size_t column, double sign) const {
        for (const Neighbour& neighbour : known_)
            if (neighbour.column == column && neighbour.step * sign > 0.0) return &neighbour;
        return nullptr;
    }

    const Neighbour* FindValid(std::size_t column, double sign) const {
        const Neighbour* neighbour = Find(column, sign);
        return neighbour != nullptr && !neighbour->trial.HasFailed() ? neighbour : nullptr;
    }

private:
    FitProblem& problem_;
    const Trial& at_;
    FitPoint unit_;
    const std::vector<std::size_t>& parameters_;
    std::vector<double> steps_;
    std::vector<Neighbour> wanted_;
    std::vector<Neighbour> known_;
};

}  // namespace

Eigen::Map<const Eigen::VectorXd> ResidualsOf(const Trial& trial) {
    const auto& residuals = trial.evaluation.residuals;
    return {residuals.data(), std::ssize(residuals)};
}

Jacobian DifferenceJacobian(FitProblem& problem, const Trial& at, const std::vector<std::size_t>& parameters,
                            double step, Differences differences) {
    DifferenceTable table(problem, at, parameters, step);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        table.Want(i, table.FirstSign(i));
        if (differences == Differences::kCentral && table.HasRoom(i, 1.0) && table.HasRoom(i, -1.0))
            table.Want(i, -1.0);
    }
    table.Ask();
    for (std::size_t i = 0; i < parameters.size(); ++i)
        for (const double sign : {1.0, -1.0})
            if (table.Find(i, -sign) != nullptr && table.FindValid(i, -sign) == nullptr &&
                table.Find(i, sign) == nullptr && table.HasRoom(i, sign))
                table.Want(i, sign);
    table.Ask();

    Jacobian jacobian;
    const auto here = ResidualsOf(at);
    jacobian.columns.resize(here.size(), std::ssize(parameters));
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const Neighbour* above = table.FindValid(i, 1.0);
        const Neighbour* below = table.FindValid(i, -1.0);
        auto column = jacobian.columns.col(static_cast<Eigen::Index>(i));
        if (above != nullptr && below != nullptr) {
            column = (ResidualsOf(above->trial) - ResidualsOf(below->trial)) / (above->step - below->step);
        } else if (above != nullptr || below != nullptr) {
            const Neighbour& one = above != nullptr ? *above : *below;
            column = (ResidualsOf(one.trial) - here) / one.step;
        } else {
            const Neighbour* failed = table.Find(i, table.FirstSign(i));
            jacobian.failure = fmt::format("beside {} = {}: {}", problem.space.parameters[parameters[i]].name,
                                           at.point[parameters[i]], failed->trial.evaluation.failure);
            return jacobian;
        }
    }
    return jacobian;
}

}  // namespace qvre
