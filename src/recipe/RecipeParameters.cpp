#include "recipe/RecipeParameters.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <map>
#include <string_view>

#include "foundation/Expression.h"
#include "foundation/FileReading.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipeTable.h"

namespace qvre {

namespace {

constexpr const char* kParameters = "parameters";

constexpr std::size_t kMostParameters = 1000;  // which bounds how deep expressions of others nest

/// Names in these sections are no use of a parameter: they tell what becomes of it.
constexpr std::array<std::string_view, 3> kAboutParameters = {kParameters, "scan", "fit"};

RecipeTable ParameterSection(const toml::table& recipe) {
    return RecipeTable(&recipe, "recipe").Section(kParameters);
}

/// "1.9 +- 0.05"
RecipeRestraint ParseRestraint(const std::string& text) {
    for (const std::string_view sign : {"+-", "+/-", "\u00B1"}) {
        const std::size_t at = text.find(sign);
        if (at == std::string::npos) continue;
        const RecipeRestraint restraint = {ParseQuantity(text.substr(0, at), RecipeUnit::kNone),
                                           ParseQuantity(text.substr(at + sign.size()), RecipeUnit::kNone)};
        if (!(restraint.sigma > 0.0)) throw ZfError("the width behind +- has to be above 0");
        return restraint;
    }
    throw ZfError("\"" + text + "\" is no restraint, such as \"1.9 +- 0.05\"");
}

void CheckBounds(RecipeTable& section, const RecipeParameter& parameter) {
    if (parameter.lower && parameter.upper && !(*parameter.lower < *parameter.upper))
        section.Fail("upper", fmt::format("the bounds are empty: {:g} does not lie below {:g}",
                                          *parameter.lower, *parameter.upper));
    if ((parameter.lower && parameter.start < *parameter.lower) ||
        (parameter.upper && parameter.start > *parameter.upper))
        section.Fail("start", fmt::format("{:g} lies outside of the bounds", parameter.start));
}

RecipeParameter ReadParameterTable(RecipeTable section) {
    RecipeParameter parameter;
    parameter.unit = section.Text("unit", "");
    section.Made("unit", [&] { UnitFactor(parameter.unit); });
    const std::optional<double> start = section.Number("start", RecipeUnit::kNone);
    if (!start) section.Fail("start", "give the value to start from");
    parameter.start = *start;
    parameter.lower = section.Number("lower", RecipeUnit::kNone);
    parameter.upper = section.Number("upper", RecipeUnit::kNone);
    if (section.Has("restraint"))
        parameter.restraint =
            section.Made("restraint", [&] { return ParseRestraint(section.Text("restraint", "")); });
    section.RefuseUnread();
    CheckBounds(section, parameter);
    return parameter;
}

/// "3.61 angstrom", or an expression of others.
RecipeParameter ReadParameterText(const std::string& text) {
    RecipeParameter parameter;
    const SplitQuantity split(text);
    const Expression expression(split.expression);
    parameter.unit = split.unit;
    if (expression.names.empty()) {
        parameter.start = expression.Evaluate({});
        return parameter;
    }
    if (!split.unit.empty())
        throw ZfError(
            "an expression of others has no unit of its own: it counts in angstrom, degrees, eV "
            "or kelvin");
    parameter.expression = split.expression;
    return parameter;
}

RecipeParameter ReadParameter(RecipeTable& section, const toml::table& table, const std::string& name) {
    RecipeParameter parameter;
    if (table[name].is_table())
        parameter = ReadParameterTable(section.Section(name));
    else if (section.HasText(name))
        parameter = section.Made(name, [&] { return ReadParameterText(section.Text(name, "")); });
    else
        parameter.start = *section.Number(name, RecipeUnit::kNone);
    parameter.name = name;
    return parameter;
}

/// Evaluates parameters, each behind those that it needs.
class Evaluation {
public:
    Evaluation(const std::vector<RecipeParameter>& parameters, NamedValues values)
        : values_(std::move(values)) {
        for (const RecipeParameter& parameter : parameters) parameters_[parameter.name] = &parameter;
    }

    // NOLINTNEXTLINE(misc-no-recursion): no deeper than there are parameters
    double Value(const std::string& name) {
        const auto known = numbers.find(name);
        if (known != numbers.end()) return known->second;
        const RecipeParameter& parameter = *parameters_.at(name);
        double value = parameter.Plain(parameter.start);
        if (!parameter.expression.empty())
            value = OfExpression(parameter);
        else if (const auto given = values_.find(name); given != values_.end())
            value = parameter.Plain(given->second);
        numbers[name] = value;
        return value;
    }

    NamedValues numbers;

private:
    // NOLINTNEXTLINE(misc-no-recursion): as above
    double OfExpression(const RecipeParameter& parameter) {
        const bool isCircle = std::find(path_.begin(), path_.end(), parameter.name) != path_.end();
        path_.push_back(parameter.name);
        if (isCircle)
            throw ZfError(fmt::format(
                "parameters depend on each other in a circle: {}",
                fmt::join(std::find(path_.begin(), path_.end(), parameter.name), path_.end(), ", ")));
        const Expression expression(parameter.expression);
        std::vector<double> arguments;
        for (const std::string& name : expression.names) {
            if (!parameters_.contains(name)) throw ZfError(Unknown(name));
            arguments.push_back(Value(name));
        }
        path_.pop_back();
        return expression.Evaluate(arguments);
    }

    std::string Unknown(const std::string& name) const {
        std::vector<std::string> known;
        for (const auto& [other, parameter] : parameters_) known.push_back(other);
        return fmt::format("there is no parameter {}; there are {}", name, fmt::join(known, ", "));
    }

    NamedValues values_;
    std::map<std::string, const RecipeParameter*> parameters_;
    std::vector<std::string> path_;
};

std::set<std::string> NamesInCell(const std::string& path) {
    std::set<std::string> names;
    for (const std::string& line : LineSplit(ReadTextFile(path))) {
        std::string name;
        for (const char c : line.substr(0, line.find('#')) + " ") {
            const bool isLetter = std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
            const bool isDigit = std::isdigit(static_cast<unsigned char>(c)) != 0;
            if (isLetter || (isDigit && !name.empty())) {
                name += c;
            } else if (!name.empty()) {
                names.insert(name);
                name.clear();
            }
        }
    }
    return names;
}

/// The parameters that depend on the name, and itself.
std::set<std::string> Dependents(const std::vector<RecipeParameter>& parameters, const std::string& name) {
    std::set<std::string> dependents = {name};
    for (std::size_t found = 0; found != dependents.size();) {
        found = dependents.size();
        for (const RecipeParameter& parameter : parameters) {
            if (parameter.expression.empty()) continue;
            for (const std::string& other : Expression(parameter.expression).names)
                if (dependents.contains(other)) dependents.insert(parameter.name);
        }
    }
    return dependents;
}

bool Meet(const std::set<std::string>& a, const std::set<std::string>& b) {
    return std::any_of(a.begin(), a.end(), [&](const std::string& name) { return b.contains(name); });
}

/// The names that each section uses.
std::map<std::string, std::set<std::string>> NamesBySection(const toml::table& recipe,
                                                            const std::string& folder) {
    std::map<std::string, std::set<std::string>> names;
    for (const auto& [key, node] : recipe) {
        const std::string section(key.str());
        if (std::find(kAboutParameters.begin(), kAboutParameters.end(), section) != kAboutParameters.end())
            continue;
        if (node.is_array()) names[section].merge(NamesUsed(node, folder));
        const toml::table* table = node.as_table();
        if (!table) continue;  // a title is no quantity, even if it is the name of one
        toml::table others = *table;
        if (section == "emission") {
            for (const char* light : kLightKeys) {
                if (const toml::node* value = table->get(light))
                    names["light"].merge(NamesUsed(*value, folder));
                others.erase(light);
            }
        }
        names[section].merge(NamesUsed(others, folder));
    }
    return names;
}

}  // namespace

std::vector<RecipeParameter> ReadParameters(const toml::table& recipe) {
    RecipeTable section = ParameterSection(recipe);
    std::vector<RecipeParameter> parameters;
    if (!section.Exists()) return parameters;
    const toml::table& table = *recipe.get_as<toml::table>(kParameters);
    if (table.size() > kMostParameters) section.Fail("", "has more than 1000 parameters");
    for (const std::string& name : section.Keys()) {
        if (!IsQuantityName(name))
            section.Fail(name,
                         "is no name of a parameter: letters, digits and _, a letter first, and no "
                         "function");
        parameters.push_back(ReadParameter(section, table, name));
    }
    Evaluation evaluation(parameters, {});
    for (RecipeParameter& parameter : parameters) {
        const double value = section.Made(parameter.name, [&] { return evaluation.Value(parameter.name); });
        if (!parameter.expression.empty()) parameter.start = value;
    }
    std::stable_sort(parameters.begin(), parameters.end(), [&](const auto& a, const auto& b) {
        return table.get(a.name)->source().begin.line < table.get(b.name)->source().begin.line;
    });
    return parameters;
}

NamedValues ParameterValues(const std::vector<RecipeParameter>& parameters, const NamedValues& values) {
    for (const auto& [name, value] : values) {
        const auto found = std::find_if(parameters.begin(), parameters.end(),
                                        [&](const RecipeParameter& one) { return one.name == name; });
        if (found == parameters.end()) {
            std::vector<std::string> known;
            for (const RecipeParameter& one : parameters) known.push_back(one.name);
            throw ZfError(known.empty() ? fmt::format("there is no parameter {}: [parameters] is empty", name)
                                        : fmt::format("there is no parameter {}; there are {}", name,
                                                      fmt::join(known, ", ")));
        }
        if (!found->expression.empty())
            throw ZfError(fmt::format("the parameter {} is {}: vary those that it depends on", name,
                                      found->expression));
    }
    Evaluation evaluation(parameters, values);
    for (const RecipeParameter& parameter : parameters) evaluation.Value(parameter.name);
    return evaluation.numbers;
}

void ResolveParameters(toml::table& recipe, const NamedValues& values) {
    toml::table numbers;
    for (const auto& [name, value] : ParameterValues(ReadParameters(recipe), values))
        numbers.insert_or_assign(name, value);
    if (!numbers.empty()) recipe.insert_or_assign(kParameters, std::move(numbers));
}

// NOLINTNEXTLINE(misc-no-recursion): values nest, no deeper than the parser lets them
std::set<std::string> NamesUsed(const toml::node& node, const std::string& folder) {
    std::set<std::string> names;
    if (const auto text = node.value_exact<std::string>())
        for (const std::string& name : NamesInQuantity(*text)) names.insert(name);
    if (const toml::array* list = node.as_array())
        for (const toml::node& item : *list) names.merge(NamesUsed(item, folder));
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table) names.merge(NamesUsed(value, folder));
        const std::string cell = RecipeFolder{folder}.Path((*table)["cell"].value_or(std::string()));
        if (IsExpressionCell(cell) && std::filesystem::is_regular_file(cell)) names.merge(NamesInCell(cell));
    }
    return names;
}

std::set<std::string> SectionsOfParameter(const toml::table& recipe, const std::string& name,
                                          const std::string& folder) {
    const std::set<std::string> dependents = Dependents(ReadParameters(recipe), name);
    std::set<std::string> sections;
    for (const auto& [section, names] : NamesBySection(recipe, folder))
        if (Meet(names, dependents)) sections.insert(section);
    return sections;
}

void RefuseUnusedParameters(const toml::table& recipe, const std::string& folder) {
    const std::vector<RecipeParameter> parameters = ReadParameters(recipe);
    std::map<std::string, std::vector<std::string>> arguments;
    for (const RecipeParameter& parameter : parameters)
        if (!parameter.expression.empty()) arguments[parameter.name] = Expression(parameter.expression).names;
    std::set<std::string> used;
    for (auto& [section, names] : NamesBySection(recipe, folder)) used.merge(names);
    std::vector<std::string> open(used.begin(), used.end());
    while (!open.empty()) {
        const std::vector<std::string> names = arguments[open.back()];
        open.pop_back();
        for (const std::string& name : names)
            if (used.insert(name).second) open.push_back(name);
    }
    for (const RecipeParameter& parameter : parameters)
        if (!used.contains(parameter.name))
            ParameterSection(recipe).Fail(
                parameter.name, "nothing in the recipe depends on it: name it in a value, such as \"" +
                                    parameter.name + "\", or leave it out");
}

}  // namespace qvre
