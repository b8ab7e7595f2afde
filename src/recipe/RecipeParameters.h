#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include <toml++/toml.h>

#include "recipe/RecipeQuantity.h"

namespace qvre {

/// Knowledge from elsewhere, in the unit of the parameter.
struct RecipeRestraint {
    double value = 0.0;
    double sigma = 0.0;
};

/// One number of the table [parameters]. Start, bounds and restraint are in its unit.
struct RecipeParameter {
    /// The value that goes into expressions, in angstrom, degrees, eV or kelvin.
    double Plain(double value) const { return value * UnitFactor(unit); }

    std::string name;
    double start = 0.0;
    std::optional<double> lower;
    std::optional<double> upper;
    std::string unit;  ///< empty for a plain number
    std::optional<RecipeRestraint> restraint;
    std::string expression;  ///< of others, in place of all the above; empty: none
};

/// The table [parameters] of a recipe, in the order of its lines. Throws ZfError with the line for a name
/// that is none, a start outside of its bounds, empty bounds, a restraint without a width, an unknown unit,
/// expressions of unknown parameters or of themselves.
std::vector<RecipeParameter> ReadParameters(const toml::table& recipe);

/// Every parameter as the expressions see it. `values`, in the units of the parameters, take the place of
/// starts; a name that is none of a parameter, or one of an expression, throws ZfError.
NamedValues ParameterValues(const std::vector<RecipeParameter>& parameters, const NamedValues& values);

/// Puts plain numbers in place of the table [parameters].
void ResolveParameters(toml::table& recipe, const NamedValues& values);

/// The names in the quantities of a node and of all below it, and in the .cell file of the key "cell" in the
/// folder of the recipe.
std::set<std::string> NamesUsed(const toml::node& node, const std::string& folder);

/// The sections of a recipe that depend on a parameter, through expressions of others as well. The keys of
/// the light, among those of the emission, count as "light".
std::set<std::string> SectionsOfParameter(const toml::table& recipe, const std::string& name,
                                          const std::string& folder);

/// Throws ZfError for a parameter on which nothing depends.
void RefuseUnusedParameters(const toml::table& recipe, const std::string& folder);

}  // namespace qvre
