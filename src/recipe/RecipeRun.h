#pragma once

#include <string>

struct RecipeRunOptions {
    std::string folder;        ///< of the results
    std::string measuredFile;  ///< compared with the result, in place of the one that the recipe names
    bool repeatsAll = false;   ///< repeats the steps that are done too
};

/// Carries out a recipe: makes the inputs, calculates, draws and compares, and leaves everything in the
/// result folder. Steps whose settings and files did not change since an earlier run in the folder are not
/// repeated. Tells on standard output what it does. Throws ZfError, also when it is interrupted; the same run
/// then goes on from the step where it was.
void RunRecipe(const std::string& recipePath, const RecipeRunOptions& options);
