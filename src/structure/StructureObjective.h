#pragma once

#include <memory>
#include <string>
#include <vector>

#include "fit/FitProblem.h"
#include "structure/FitDataSet.h"

namespace qvre {

/// What a fit of a recipe compares: all its data sets, at points of its parameters.
class StructureObjective final : public FitObjective {
public:
    StructureObjective(const ParameterSpace& space, std::vector<std::unique_ptr<FitDataSet>> sets);

    /// Several points are calculated side by side, one a thread. What cannot be calculated has failed.
    std::vector<Evaluation> Evaluate(const std::vector<FitPoint>& points) override;
    double SolvedAlong() const override;

    /// Keeps the settings of the sample near those of a point, or looks for them everywhere: see FitDataSet.
    /// Throws ZfError for a point that cannot be calculated.
    void KeepSettingsOf(const FitPoint& point);
    void SearchSettings();

    NamedValues ValuesAt(const FitPoint& point) const;

    const std::vector<std::unique_ptr<FitDataSet>>& DataSets() const { return sets_; }
    double IndependentData() const;
    bool HasSigmas() const;  ///< whether all were measured with standard deviations

private:
    Evaluation EvaluateOne(const FitPoint& point) const;

    const ParameterSpace& space_;
    std::vector<std::unique_ptr<FitDataSet>> sets_;
};

}  // namespace qvre
