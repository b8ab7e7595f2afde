#pragma once

#include <string>

#include "recipe/RecipeOptions.h"
#include "run/RunPlan.h"

namespace qvre {

/// Reads the whole recipe, so that a wrong key, unit, value or file is refused before anything is calculated,
/// and so are two steps that would write the same file. Nothing is made in the folder of the results. Throws
/// ZfError.
RunPlan PlanRecipe(const std::string& recipePath, const RecipeOptions& options);

}  // namespace qvre
