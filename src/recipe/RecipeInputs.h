#pragma once

#include <functional>
#include <string>

#include "prepare/phases/PhaseShifts.h"
#include "recipe/RecipeTable.h"

/// Writes one file of a run and returns what the user should know of it, in lines; throws ZfError.
using FileMaker = std::function<std::string(const std::string& output)>;

/// Where the files of a recipe are looked for: beside the recipe.
struct RecipeFolder {
    std::string Path(const std::string& name) const;  ///< an absolute name stays

    std::string folder;
};

/// Copies the ready file that the section names with "file". Throws ZfError at once when it cannot be read.
FileMaker CopyOfFile(RecipeTable& section, const RecipeFolder& place);

// The input sections of a recipe. Each function reads its section whole, so that a mistake shows before
// anything is made, and returns what makes the file. A section may name a ready file instead ("file"), which
// is copied then. They throw ZfError.

FileMaker ReadClusterSection(RecipeTable section, const RecipeFolder& place);
/// The photoelectron feels the same field at the emitter as anywhere else: `crystal` has its settings.
FileMaker ReadEmissionSection(RecipeTable section, const RecipeFolder& place,
                              const PhaseShiftRequest& crystal, const std::string& clusterFile);
/// The settings of the phase shifts; those of a ready file are not known and stay the usual ones.
PhaseShiftRequest ReadPhaseShiftRequest(RecipeTable section);
FileMaker ReadPhasesSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile,
                            const std::string& wavesFile);
FileMaker ReadThermalSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile);
