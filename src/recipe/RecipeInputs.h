#pragma once

#include <functional>
#include <string>

#include "recipe/RecipeTable.h"

/// Writes one file of a run; throws ZfError.
using FileMaker = std::function<void(const std::string& output)>;

/// Where the files of a recipe are looked for: beside the recipe.
struct RecipeFolder {
    std::string Path(const std::string& name) const;  ///< an absolute name stays

    std::string folder;
};

// The input sections of a recipe. Each function reads its section whole, so that a mistake shows before
// anything is made, and returns what makes the file. A section may name a ready file instead ("file"), which
// is copied then. They throw ZfError.

FileMaker ReadClusterSection(RecipeTable section, const RecipeFolder& place);
FileMaker ReadEmissionSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile);
FileMaker ReadPhasesSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile,
                            const std::string& wavesFile);
FileMaker ReadThermalSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile);
