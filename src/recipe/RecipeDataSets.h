#pragma once

#include <string>
#include <vector>

#include <toml++/toml.h>

namespace qvre {

/// One measured pattern of a recipe that has several: a table [[data]] with a name, a weight in a fit, and
/// the sections that are different for it, such as data.emission.level or data.compare.measured. Its keys
/// take the place of those of the recipe, or stand beside them.
struct RecipeDataSet {
    std::string name;  ///< empty: the recipe has a single one, its own
    double weight = 1.0;
};

/// Those of a recipe, in the order of its lines; one without a name where there is no [[data]]. Throws
/// ZfError with the line for names that are missing, stand twice or cannot be part of a file's name, weights
/// below 0, and keys that are no sections.
std::vector<RecipeDataSet> ReadDataSets(const toml::table& recipe);

/// Makes the recipe that of one of its data sets; every value keeps its line. Throws ZfError for a name that
/// is none of them.
void ChooseDataSet(toml::table& recipe, const std::string& name);

}  // namespace qvre
