#pragma once

#include <string>
#include <vector>

#include "recipe/RecipeCases.h"
#include "recipe/RecipeInputs.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// The method of a run.
struct MethodChoice {
    ScatteringMethod method = kMulti;
    std::string remark;  ///< what was taken and why, where the recipe names none
};

/// What a run may take for a method to be the usual one.
constexpr double kAffordable_s = 60.0;

/// What the recipe names, otherwise FULL if all its calculations together are expected to take less than
/// `affordable_s` by it (NominalSeconds), and MULTI if not, as well as for plane waves and for damping by the
/// distance, which FULL does not know. The choice is the same on every machine. Throws ZfError.
MethodChoice ChooseMethod(const std::vector<RecipeGroup>& groups, const RecipeFolder& place,
                          double affordable_s = kAffordable_s);

}  // namespace qvre
