#pragma once

#include "recipe/RecipeCases.h"
#include "recipe/RecipeEnergies.h"
#include "recipe/RunDraft.h"

namespace qvre {

/// Adds the steps of the curves over the energy: the members of a series at one energy add up; kept apart,
/// each of them has its curves. Throws ZfError.
void AddEnergies(RunDraft& draft, const RecipeEnergies& energies, bool areMembersApart,
                 const RecipeGroup& group);

}  // namespace qvre
