#pragma once

#include <vector>

#include "recipe/RecipeCases.h"
#include "recipe/RecipePictures.h"
#include "recipe/RunDraft.h"

namespace qvre {

// Steps that end in images and pictures of a run. All throw ZfError.

/// The files and the images of one case.
RunResult AddImages(RunDraft& draft, const RecipeCase& one);

/// The sum over the members of a group.
RunResult AddSum(RunDraft& draft, const std::vector<RunResult>& members, const RecipeGroup& group);

/// The asymmetry of two members as an image and a picture.
void AddAsymmetry(RunDraft& draft, const std::vector<RunResult>& members);

/// Several results have pictures of their own, with their labels in the names and titles.
void AddPicture(RunDraft& draft, const RunResult& result, const RecipePicture& picture);

}  // namespace qvre
