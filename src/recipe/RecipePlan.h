#pragma once

#include <string>

#include "recipe/RecipeQuantity.h"
#include "run/RunPlan.h"

namespace qvre {

struct RecipeOptions {
    std::string folder;           ///< of the results
    std::string measuredFile;     ///< compared with the result, in place of the one that the recipe names
    NamedValues parameters = {};  ///< in their units, in place of the starts of [parameters]
    std::string dataSet = {};     ///< name of one of [[data]]; empty where there are none
};

/// Reads the whole recipe, so that a wrong key, unit, value or file is refused before anything is calculated,
/// and so are two steps that would write the same file. Nothing is made in the folder of the results. Throws
/// ZfError.
RunPlan PlanRecipe(const std::string& recipePath, const RecipeOptions& options);

}  // namespace qvre
