#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "fit/FitProblem.h"
#include "foundation/Interruption.h"
#include "foundation/ZfError.h"

using namespace qvre;

/// An objective from a function that gives the residuals of a point; what it throws is why the point failed.
/// R is the sum of the squared residuals over `power`.
class FunctionObjective : public FitObjective {
public:
    using Function = std::function<std::vector<double>(const FitPoint&)>;

    explicit FunctionObjective(Function function, double measuredPower = 1.0)
        : function_(std::move(function)), power_(measuredPower) {}

    std::vector<Evaluation> Evaluate(const std::vector<FitPoint>& points) override {
        if (interruptAt >= 0 && (asked += static_cast<int>(points.size())) > interruptAt)
            throw Interruption(2);
        std::vector<Evaluation> evaluations;
        for (const FitPoint& point : points) evaluations.push_back(One(point));
        return evaluations;
    }

    int interruptAt = -1;  ///< evaluations; negative: never
    int asked = 0;

private:
    Evaluation One(const FitPoint& point) const {
        Evaluation evaluation;
        try {
            evaluation.residuals = function_(point);
        } catch (const ZfError& error) {
            evaluation.failure = error.message;
        }
        for (const double residual : evaluation.residuals) evaluation.r += residual * residual / power_;
        evaluation.dataSetR = {evaluation.r};
        return evaluation;
    }

    Function function_;
    double power_;
};

/// Parameters a, b, c ... of the same start and bounds.
inline ParameterSpace Cube(int dimension, double start, double lower, double upper) {
    std::vector<FitParameter> parameters;
    for (int i = 0; i < dimension; ++i)
        parameters.push_back({std::string(1, static_cast<char>('a' + i)), start, lower, upper, "angstrom"});
    return ParameterSpace(parameters);
}

inline std::vector<double> Rosenbrock(const FitPoint& x) {
    return {10.0 * (x[1] - x[0] * x[0]), 1.0 - x[0]};
}
