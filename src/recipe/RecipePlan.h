#pragma once

#include <string>
#include <vector>

#include "recipe/ResultFolder.h"
#include "report/PatternComparison.h"

/// What a recipe ends with: a pattern with the image of its direct wave, by file names in the result folder.
struct RunResult {
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
    CompareRequest comparison;  ///< without the images; no measured file: none is asked for
};

/// Reads the whole recipe, so that a wrong key, unit or file is refused before anything is calculated.
/// `folder` is that of the results; nothing is made there. Throws ZfError.
RecipePlan PlanRecipe(const std::string& recipePath, const std::string& folder);
