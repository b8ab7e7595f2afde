#pragma once

#include <map>
#include <string>
#include <vector>

#include "recipe/RecipeCases.h"
#include "recipe/RecipeFolder.h"
#include "recipe/RecipeOptions.h"
#include "run/RunPlan.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// Sections of a recipe on which a file depends. Without "light" it does not depend on the light keys of the
/// emission either: waves are scattered before any light combines them.
using Sections = std::vector<std::string>;

inline const Sections kImageSections = {"cluster",    "emission", "light", "phases",
                                        "scattering", "thermal",  "image"};
inline const Sections kComparedSections = {"cluster",    "emission", "light", "phases",
                                           "scattering", "thermal",  "image", "compare"};

/// "_layer3_300K": the values that tell the file of one calculation from those of the others.
std::string SuffixOf(const RecipeCase& one, const Sections& sections);

/// A suffix without its first sign.
std::string LabelOf(const std::string& suffix);

/// The plan of a recipe in the making, with what its steps share.
class RunDraft {
public:
    RunDraft(std::string path, const RecipeOptions& options);

    std::string InFolder(const std::string& name) const { return plan.folder + "/" + name; }

    /// Fingerprint of the sections, with the content of the files and the values of the parameters that they
    /// name, and of the tables that the program reads. `name` is the step's, with what it depends on besides.
    std::string KeyOf(const RecipeCase& one, const std::string& name, const Sections& sections) const;

    /// A step that is in the plan already is not added again. Throws ZfError for outputs that another step
    /// writes.
    void Add(RunStep step);

    /// Whether nothing writes the file yet. Throws ZfError unless that is the step with this key.
    bool Claim(const std::string& output, const std::string& key);

    std::string recipePath;
    RecipeFolder place;
    std::string measuredFile;  ///< in place of the one that the recipe names; empty: none
    ScatteringMethod method = kMulti;
    bool areStepsNoted = false;  ///< those of a further energy, which are like those of the first
    RunPlan plan;

private:
    std::string tables_;                          // fingerprints of the shipped ones
    std::map<std::string, std::string> writers_;  // key of the step that writes a file, by its name
};

}  // namespace qvre
