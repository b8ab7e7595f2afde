#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "fit/ParameterSpace.h"
#include "recipe/RecipeFit.h"
#include "structure/FitDataSet.h"

namespace qvre {

/// What a command may say instead of the recipe.
struct FitChoices {
    std::optional<FitSearch> search;
    std::optional<std::uint64_t> seed;
    std::optional<int> evaluations;
};

/// A recipe that is to be fitted.
struct FitPlan {
    std::string title;
    std::string recipePath;
    std::string text;  ///< of the recipe
    RecipeFit fit;
    ParameterSpace space;
    std::vector<RecipeSource> sources;  ///< of the data sets
    std::vector<double> weights;
};

/// Reads the whole recipe, so that what is wrong with it is refused before anything is calculated. Throws
/// ZfError, also for parameters on which no pattern depends.
FitPlan PlanFit(const std::string& recipePath, const FitChoices& choices);

/// The data sets of a plan, with the atoms and phase shifts of the structure at a point. Throws ZfError.
std::vector<std::unique_ptr<FitDataSet>> MakeDataSets(const FitPlan& plan, const FitPoint& at);

/// Lines of text that are the same for fits whose evaluations at the same point are the same.
std::vector<std::string> ProblemText(const FitPlan& plan);

}  // namespace qvre
