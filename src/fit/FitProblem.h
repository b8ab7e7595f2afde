#pragma once

#include <cstddef>
#include <vector>

#include "fit/ParameterSpace.h"
#include "fit/Trial.h"

namespace qvre {

/// What is fitted.
class FitObjective {
public:
    FitObjective() = default;
    FitObjective(const FitObjective&) = delete;
    FitObjective& operator=(const FitObjective&) = delete;
    virtual ~FitObjective() = default;

    /// One evaluation a point, in their order. The points do not depend on each other and may be calculated
    /// side by side; a result must not depend on what is calculated with it. Throws Interruption to end the
    /// fit with what it has.
    virtual std::vector<Evaluation> Evaluate(const std::vector<FitPoint>& points) = 0;

    /// How many numbers each evaluation fits along the way, such as a scale: so many degrees of freedom less.
    virtual double SolvedAlong() const { return 0.0; }
};

class EvaluationTable;

/// What all searches minimise: the sum of the squared residuals over the parameters.
class FitProblem {
public:
    FitProblem(const ParameterSpace& parameterSpace, FitObjective& fitObjective,
               EvaluationTable* evaluationTable = nullptr)
        : space(parameterSpace), objective_(fitObjective), table_(evaluationTable) {}

    /// One trial a point, in their order; they get into the table, or come from it when a former fit made
    /// them. A result that is not finite, or has another number of residuals than the first, has failed.
    std::vector<Trial> Evaluate(const std::vector<FitPoint>& points);
    Trial EvaluateOne(const FitPoint& point) { return Evaluate(std::vector<FitPoint>(1, point)).front(); }

    double SolvedAlong() const { return objective_.SolvedAlong(); }

    const ParameterSpace& space;
    int generation = 0;          ///< of what is evaluated next, for the table
    bool keepsResiduals = true;  ///< in the table: false where a misfit is enough, and trials lack theirs
    int evaluations = 0;         ///< made so far

private:
    Trial Judged(const FitPoint& point, Evaluation evaluation);

    FitObjective& objective_;
    EvaluationTable* table_;
    std::size_t residuals_ = 0;  // of the data; 0: not known yet
};

}  // namespace qvre
