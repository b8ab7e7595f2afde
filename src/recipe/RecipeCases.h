#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <toml++/toml.h>

#include "recipe/RecipeQuantity.h"
#include "recipe/RecipeTable.h"

namespace qvre {

/// A setting that takes several values in a run.
struct RecipeVariation {
    /// "thermal.temperature", or the plain name of a parameter.
    std::string Name() const;

    std::string section;  ///< "thermal", or "parameters"
    std::string key;      ///< "temperature", or "debye.Cu" in a table of the section
    std::string label;    ///< of one value, for file names: "300K"
    bool isScanned = false;
    std::string unit;                ///< of a parameter
    std::set<std::string> sections;  ///< that depend on it; the light keys of the emission are "light"
};

/// One calculation of a run: a recipe in which every setting has one value.
struct RecipeCase {
    toml::table settings;
    std::vector<RecipeVariation> variations;
};

/// The calculations behind one result: the members of a series, one when there is none. A scan has one group
/// for each of its values.
struct RecipeGroup {
    std::vector<double> scanned;  ///< values of the scanned settings
    std::vector<RecipeCase> cases;
};

/// A recipe as text, and which of its calculations are wanted.
struct RecipeSource {
    std::string text;
    std::string path;          ///< names it in messages and tells the folder of its files
    NamedValues values = {};   ///< in place of the starts of parameters
    std::string dataSet = {};  ///< name of one of [[data]]; empty where there are none
    bool ignoresScan = false;
    /// Settings in place of those of the recipe, such as {"cluster.atoms", 150}.
    std::vector<std::pair<std::string, RecipeTable::Scalar>> settings = {};
};

/// A series comes from lists: cluster.emitter-layer, emission.kinetic, emission.photon, emission.circular and
/// thermal.temperature, in all combinations, the last one running fastest. The table [scan] names one setting
/// or parameter ("vary"), which is no list, and its values, as a list ("values") or as "from", "to" and
/// "steps"; two such tables, or one with lists of two, scan two settings in all combinations. The table
/// [energies] makes a case of each energy, in their order, and of each member of the series at that energy.
///
/// It is parsed once for each case, so that every value knows its line. Throws ZfError, also for a text that
/// is no TOML and for more than 1000 cases.
std::vector<RecipeGroup> ExpandRecipe(const RecipeSource& source);

/// The tables of a recipe's text. Throws ZfError with `path` and the line for what is no TOML.
toml::table ParseRecipe(const std::string& text, const std::string& path);

/// A section of a case with the values of the parameters in it: the text of all that depends on it, files
/// aside; empty without the section. The light keys of the emission count with the light alone.
std::string SectionText(const RecipeCase& one, const std::string& section, bool withLight,
                        const std::string& folder);

/// The text of a recipe. Throws ZfError for a file that is missing or cannot be one.
std::string ReadRecipe(const std::string& path);

}  // namespace qvre
