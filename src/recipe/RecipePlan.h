#pragma once

#include <string>
#include <vector>

#include "recipe/RecipeRun.h"
#include "recipe/RecipeSettings.h"
#include "run/ResultFolder.h"

/// What a recipe ends with: a pattern with the image of its direct wave, by file names in the result folder.
struct RunResult {
    /// Name of a file that every result has: with its label, "chi_300K.png".
    std::string FileName(const std::string& name) const;

    std::string label;  ///< the settings that tell it from the others; empty for a single one
    std::string image;
    std::string directImage;
    std::string key;       ///< fingerprint of the images
    double scanned = 0.0;  ///< value of the scanned setting
};

/// The steps of a recipe in an order in which each finds its inputs. A step that several calculations share,
/// such as the scattered wave under two temperatures, stands there once.
struct RecipePlan {
    std::string title;
    std::string scannedName;  ///< "thermal.temperature"; empty without a scan
    std::vector<RunStep> steps;
    std::vector<RunResult> results;
    RecipeComparison comparison;
};

/// Reads the whole recipe, so that a wrong key, unit or file is refused before anything is calculated, and so
/// are two steps that would write the same file. Nothing is made in the folder of the results. Throws
/// ZfError.
RecipePlan PlanRecipe(const std::string& recipePath, const RecipeRunOptions& options);
