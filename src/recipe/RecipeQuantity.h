#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace qvre {

/// What a number of a recipe measures. A plain number is in the unit named here; a text may carry another one
/// of the same kind, such as "1.4866 keV".
enum class RecipeUnit : std::uint8_t { kNone, kElectronVolt, kAngstrom, kDegree, kKelvin, kPercent };

/// Values of parameters by their names, in eV, angstrom, degrees, kelvin and percent.
using NamedValues = std::map<std::string, double>;

/// Number, or Expression of parameters, with an optional unit: "560 eV", "0.25 nm", "2*a", "2*a + 0.1 nm", in
/// the unit of `unit`. The unit counts for the whole. Throws ZfError with the units that serve, or the
/// parameters that there are.
double ParseQuantity(const std::string& text, RecipeUnit unit, const NamedValues& parameters = {});

/// The names in a quantity; none for a text that is no expression with an optional unit.
std::vector<std::string> NamesInQuantity(const std::string& text);

/// How much a unit is of eV, angstrom, degrees, kelvin or percent: 10 for "nm"; 1 for the empty name. Throws
/// ZfError for other names than those of units.
double UnitFactor(const std::string& name);

/// What a unit measures; kNone for the empty name. Throws ZfError for other names than those of units.
RecipeUnit KindOfUnit(const std::string& name);

/// Splits a number or expression from the unit behind it: "0.25 nm" in {"0.25", "nm"}. The unit is empty
/// where there is none.
struct SplitQuantity {
    explicit SplitQuantity(const std::string& text);

    std::string expression;
    std::string unit;
};

/// A line "name = value" for each.
std::string NumbersText(const NamedValues& numbers);

}  // namespace qvre
