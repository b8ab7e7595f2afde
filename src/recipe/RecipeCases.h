#pragma once

#include <string>
#include <vector>

#include <toml++/toml.h>

namespace qvre {

/// A setting that takes several values in a run.
struct RecipeVariation {
    std::string section;  ///< "thermal"
    std::string key;      ///< "temperature", or "debye.Cu" in a table of the section
    std::string label;    ///< of one value, for file names: "300K"
};

/// One calculation of a run: a recipe in which every setting has one value.
struct RecipeCase {
    toml::table settings;
    std::vector<RecipeVariation> variations;
};

/// The calculations behind one result: the members of a series, one when there is none. A scan has one group
/// for each of its values.
struct RecipeGroup {
    double scanned = 0.0;  ///< value of the scanned setting
    std::vector<RecipeCase> cases;
};

/// A series comes from lists: cluster.emitter-layer, emission.kinetic, emission.photon, emission.circular and
/// thermal.temperature, in all combinations, the last one running fastest. The table [scan] names one setting
/// ("vary"), which is no list, and its values, as a list ("values") or as "from", "to" and "steps". The table
/// [energies] makes a case of each energy, in their order, and of each member of the series at that energy.
///
/// `text` is the recipe, `path` names it in messages. It is parsed once for each case, so that every value
/// knows its line. Throws ZfError, also for a text that is no TOML and for more than 1000 cases.
std::vector<RecipeGroup> ExpandRecipe(const std::string& text, const std::string& path);

/// The text of a recipe. Throws ZfError for a file that is missing or cannot be one.
std::string ReadRecipe(const std::string& path);

}  // namespace qvre
