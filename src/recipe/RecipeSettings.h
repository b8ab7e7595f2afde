#pragma once

#include <optional>
#include <string>

#include "recipe/RecipeInputs.h"
#include "recipe/RecipeTable.h"
#include "run/RunPlan.h"
#include "run/RunStages.h"

// The sections of a recipe that make no file of the input set. Each function reads its section whole and
// throws ZfError.

namespace qvre {

/// Without the files and, in the request, without the method.
struct ScatteringSection {
    ScatteringRequest request;
    std::optional<ScatteringMethod> method;  ///< none: the recipe leaves it open
};

ScatteringSection ReadScatteringSection(RecipeTable section);

/// Without the files.
struct ImageSection {
    ImageRequest request;
    std::optional<MeanFreePathRequest> losses;
};

ImageSection ReadImageSection(RecipeTable section);

/// `measuredFile`, if there is one, takes the place of the file that the section names. Without a column chi
/// and without a background that is asked for, a cubic in the polar angle is taken away, here and from the
/// pattern. Refuses measured points that cannot be compared with any pattern.
RunComparison ReadCompareSection(RecipeTable section, const RecipeFolder& place,
                                 const std::string& measuredFile);

}  // namespace qvre
