#include "recipe/RecipeQuantity.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "foundation/Constants.h"
#include "foundation/Expression.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

struct NamedUnit {
    RecipeUnit kind;
    const char* name;
    double factor;
};

constexpr std::array<NamedUnit, 16> kUnits = {{
    {RecipeUnit::kElectronVolt, "eV", 1.0},
    {RecipeUnit::kElectronVolt, "keV", 1e3},
    {RecipeUnit::kElectronVolt, "hartree", kHartree_eV},
    {RecipeUnit::kAngstrom, "angstrom", 1.0},
    {RecipeUnit::kAngstrom, "A", 1.0},
    {RecipeUnit::kAngstrom, "nm", 10.0},
    {RecipeUnit::kAngstrom, "pm", 0.01},
    {RecipeUnit::kAngstrom, "bohr", kBohr_angstrom},
    {RecipeUnit::kDegree, "deg", 1.0},
    {RecipeUnit::kDegree, "degree", 1.0},
    {RecipeUnit::kDegree, "degrees", 1.0},
    {RecipeUnit::kDegree, "rad", kDegreesPerRadian},
    {RecipeUnit::kKelvin, "K", 1.0},
    {RecipeUnit::kKelvin, "kelvin", 1.0},
    {RecipeUnit::kPercent, "percent", 1.0},
    {RecipeUnit::kPercent, "%", 1.0},
}};

std::string UnitNames(RecipeUnit kind) {
    std::string names;
    for (const NamedUnit& unit : kUnits)
        if (unit.kind == kind) names += (names.empty() ? "" : ", ") + std::string(unit.name);
    return names;
}

std::string_view Trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
}

bool IsUnit(std::string_view name) {
    for (const NamedUnit& unit : kUnits)
        if (unit.name == name) return true;
    return false;
}

const NamedUnit& UnitOf(const std::string& name) {
    for (const NamedUnit& unit : kUnits)
        if (name == unit.name) return unit;
    std::string known;
    for (const NamedUnit& unit : kUnits) known += (known.empty() ? "" : ", ") + std::string(unit.name);
    throw ZfError(fmt::format("there is no unit \"{}\"; there are {}", name, known));
}

double FactorOf(std::string_view name, RecipeUnit kind) {
    for (const NamedUnit& unit : kUnits)
        if (unit.kind == kind && unit.name == name) return unit.factor;
    std::string message = "the unit \"";
    message += name;
    throw ZfError(message + "\" does not serve here" +
                  (kind == RecipeUnit::kNone ? "; give the plain number" : "; give " + UnitNames(kind)));
}

/// None for a text that is no expression.
std::optional<Expression> ExpressionOf(const std::string& text) {
    try {
        return Expression(text);
    } catch (const ZfError&) {
        return std::nullopt;
    }
}

/// None for an expression without names, and where there are no parameters.
std::optional<double> ParametersValue(const std::string& text, const NamedValues& parameters) {
    const std::optional<Expression> expression = ExpressionOf(text);
    if (parameters.empty() || !expression || expression->names.empty()) return std::nullopt;
    std::vector<double> values;
    for (const std::string& name : expression->names) {
        const auto found = parameters.find(name);
        if (found == parameters.end()) {
            std::string known;
            for (const auto& [other, value] : parameters) known += (known.empty() ? "" : ", ") + other;
            throw ZfError(fmt::format("\"{}\" is no number: there is no parameter {}; there are {}", text,
                                      name, known));
        }
        values.push_back(found->second);
    }
    return expression->Evaluate(values);
}

}  // namespace

SplitQuantity::SplitQuantity(const std::string& text) : expression(Trimmed(text)) {
    if (expression.ends_with('%')) {  // often without a blank before it
        unit = "%";
        expression = Trimmed(std::string_view(expression).substr(0, expression.size() - 1));
        return;
    }
    const std::size_t blank = expression.find_last_of(' ');
    if (blank == std::string::npos) return;
    const std::string rest(Trimmed(expression.substr(0, blank)));
    const std::string last = expression.substr(blank + 1);
    // Of "2 * A" the rest is no expression, and A a parameter.
    if (!IsUnit(last) || !ExpressionOf(rest)) return;
    expression = rest;
    unit = last;
}

double ParseQuantity(const std::string& text, RecipeUnit unit, const NamedValues& parameters) {
    const SplitQuantity split(text);
    if (const std::optional<double> value = ParametersValue(split.expression, parameters))
        return split.unit.empty() ? *value : *value * FactorOf(split.unit, unit);
    const std::string_view body = Trimmed(text);
    double number = 0.0;
    const auto [end, failure] = std::from_chars(body.data(), body.data() + body.size(), number);
    if (failure != std::errc{} || !std::isfinite(number)) throw ZfError("\"" + text + "\" is no number");
    const std::string_view name = Trimmed(body.substr(static_cast<std::size_t>(end - body.data())));
    if (!name.empty()) number *= FactorOf(name, unit);
    if (!std::isfinite(number)) throw ZfError("\"" + text + "\" is too large");
    return number;
}

std::vector<std::string> NamesInQuantity(const std::string& text) {
    const std::optional<Expression> expression = ExpressionOf(SplitQuantity(text).expression);
    return expression ? expression->names : std::vector<std::string>{};
}

double UnitFactor(const std::string& name) {
    return name.empty() ? 1.0 : UnitOf(name).factor;
}

RecipeUnit KindOfUnit(const std::string& name) {
    return name.empty() ? RecipeUnit::kNone : UnitOf(name).kind;
}

std::string NumbersText(const NamedValues& numbers) {
    std::string text;
    for (const auto& [name, value] : numbers) text += fmt::format("{} = {}\n", name, value);
    return text;
}

}  // namespace qvre
