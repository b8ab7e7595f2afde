#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recipe/RecipeFit.h"
#include "recipe/RecipeModel.h"
#include "report/compare/PatternComparison.h"
#include "structure/FitReport.h"

namespace qvre {

/// What one measured pattern says of a structure.
struct DataEvaluation {
    std::vector<double> residuals;  ///< as Evaluation has them
    double r = 0.0;
};

/// A measured pattern of a fit with the calculation that it is compared with.
class FitDataSet {
public:
    /// Of the data set of a recipe whose parameters stand at their start. Throws ZfError as PlanRecipe, and
    /// for what no fit compares.
    FitDataSet(RecipeSource source, double weight, const RecipeFit& fit);

    /// With values of parameters, in their units. Throws ZfError for a structure that cannot be calculated.
    /// Called from several threads.
    DataEvaluation Evaluate(const NamedValues& values) const;

    /// Compared as Evaluate does.
    FittedData Fitted(const NamedValues& values) const;

    const std::string& Name() const { return name_; }
    double Weight() const { return weight_; }
    double IndependentData() const { return independentData_; }
    const std::string& Remark() const { return remark_; }  ///< on the method

private:
    std::vector<RecipeCase> CasesOf(const NamedValues& values) const;
    std::shared_ptr<const MeasuredComparison> ComparisonOf(const RecipeCase& one, double kinetic_eV) const;
    CompareResult Compared(const NamedValues& values) const;

    RecipeSource source_;
    RecipeFolder place_;
    std::string name_;
    double weight_;
    bool isAmplitudeFree_;
    std::string remark_;
    std::vector<std::unique_ptr<RecipeModel>> models_;  // of the members of a series
    std::unique_ptr<MapDirections> map_;
    double independentData_ = 0.0;
    WeightedModulation measured_;   // of all points
    std::vector<double> variance_;  // that weighs their residuals
    mutable LastMade<MeasuredComparison> comparison_;
};

}  // namespace qvre
