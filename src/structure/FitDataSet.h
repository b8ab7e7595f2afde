#pragma once

#include <memory>
#include <string>
#include <vector>

#include "recipe/RecipeFit.h"
#include "report/compare/PatternComparison.h"
#include "structure/FitReport.h"
#include "structure/SeriesCalculation.h"

namespace qvre {

/// The name of the data set of a recipe, "data" for a single one.
std::string NameOfData(const RecipeSource& source);

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
    FitDataSet(const RecipeSource& source, double weight, const RecipeFit& fit);

    /// With values of parameters, in their units. Throws ZfError for a structure that cannot be calculated.
    /// Called from several threads.
    DataEvaluation Evaluate(const NamedValues& values) const;

    /// From here on the setting of the sample is looked for around the one that serves these values best, so
    /// that it is a smooth function of them; otherwise everywhere, and may jump between settings that serve
    /// equally well.
    void KeepSettingOf(const NamedValues& values);
    void SearchSettings() { near_.reset(); }

    /// Compared as Evaluate does.
    FittedData Fitted(const NamedValues& values) const;

    /// The inputs of its calculation, by the members of a series.
    std::vector<PreparedCase> Inputs(const NamedValues& values) const {
        return calculation_.Inputs(calculation_.Members(values));
    }

    const std::string& Name() const { return name_; }
    double Weight() const { return weight_; }
    double IndependentData() const { return independentData_; }
    /// How many numbers of its own each evaluation fits: of the setting, the amplitude and the background.
    double SolvedAlong() const;
    bool HasSigmas() const { return hasSigmas_; }
    bool IsSmooth() const { return calculation_.IsSmooth(); }
    const std::string& MethodText() const { return calculation_.MethodText(); }

private:
    std::shared_ptr<const MeasuredComparison> ComparisonOf(const RecipeCase& one, double kinetic_eV) const;
    CompareResult Compared(const NamedValues& values) const;

    SeriesCalculation calculation_;
    std::string name_;
    double weight_;
    bool isAmplitudeFree_;
    double independentData_ = 0.0;
    bool hasSigmas_ = false;
    std::optional<BackgroundModel> background_;
    SearchedSettings searched_;
    double rings_ = 0.0;
    WeightedModulation measured_;   // of all points
    std::vector<double> variance_;  // that weighs their residuals
    std::optional<SampleSetting> near_;
    mutable LastMade<MeasuredComparison> comparison_;
};

}  // namespace qvre
