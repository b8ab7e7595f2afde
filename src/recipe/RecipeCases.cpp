#include "recipe/RecipeCases.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "recipe/RecipeTable.h"

namespace {

struct SeriesKey {
    const char* section;
    const char* key;
    const char* before;  // around the value in a label
    const char* after;
};

constexpr std::array<SeriesKey, 4> kSeriesKeys = {{
    {"cluster", "emitter-layer", "layer", ""},
    {"emission", "kinetic", "", "eV"},
    {"emission", "photon", "photon", "eV"},
    {"thermal", "temperature", "", "K"},
}};

/// A value as part of a file name: text values come without what a shell or a file system could stumble on.
std::string LabelOf(const toml::node& value) {
    if (value.is_number()) return DoubleToText(value.value<double>().value_or(0.0));
    std::string label;
    for (const char c : value.value<std::string>().value_or(""))
        if (c != ' ' && c != '/') label += c;
    return label;
}

void SetValue(toml::table& settings, const RecipeVariation& where, const toml::node& value) {
    toml::table* table = settings[where.section].as_table();
    std::string key = where.key;
    for (std::size_t dot = key.find('.'); table && dot != std::string::npos; dot = key.find('.')) {
        table = table->get_as<toml::table>(key.substr(0, dot));
        key.erase(0, dot + 1);
    }
    if (!table) throw ZfError("The recipe has no table for " + where.section + "." + where.key);
    value.visit([&](const auto& typed) { table->insert_or_assign(key, typed); });
}

/// A whole number stays one, for the settings that count something.
void SetNumber(toml::table& settings, const RecipeVariation& where, double number) {
    if (std::abs(number) < 1e15 && number == std::floor(number))
        SetValue(settings, where, toml::value<std::int64_t>(static_cast<std::int64_t>(number)));
    else
        SetValue(settings, where, toml::value<double>(number));
}

/// Replaces every case by one for each value of the list at the key, if there is a list.
void ExpandKey(std::vector<RecipeCase>& cases, const SeriesKey& series) {
    std::vector<RecipeCase> expanded;
    for (const RecipeCase& one : cases) {
        const toml::array* list = one.settings[series.section][series.key].as_array();
        if (!list) {
            expanded.push_back(one);
            continue;
        }
        if (list->empty())
            throw ZfError("The list " + std::string(series.section) + "." + series.key + " is empty");
        for (const toml::node& value : *list) {
            RecipeCase member = one;
            RecipeVariation variation{series.section, series.key, series.before + LabelOf(value)};
            if (value.is_number()) variation.label += series.after;
            SetValue(member.settings, variation, value);
            if (list->size() > 1) member.variations.push_back(std::move(variation));
            expanded.push_back(std::move(member));
        }
    }
    cases = std::move(expanded);
}

std::vector<RecipeCase> ExpandSeries(RecipeCase one) {
    std::vector<RecipeCase> cases = {std::move(one)};
    for (const SeriesKey& series : kSeriesKeys) ExpandKey(cases, series);
    return cases;
}

std::vector<double> ScanValues(RecipeTable& scan) {
    std::vector<double> values = scan.Numbers("values", RecipeUnit::kNone);
    const auto from = scan.Number("from", RecipeUnit::kNone);
    const auto to = scan.Number("to", RecipeUnit::kNone);
    const auto steps = scan.Integer("steps");
    if (!values.empty()) {
        if (from || to || steps) scan.Fail("values", "give either values, or from, to and steps");
        return values;
    }
    constexpr std::int64_t kMostSteps = 1000;
    if (!from || !to || !steps || *steps < 2 || *steps > kMostSteps)
        scan.Fail("vary", "give values, or from, to and steps (2 to 1000)");
    for (std::int64_t i = 0; i < *steps; ++i)
        values.push_back(*from + (*to - *from) * static_cast<double>(i) / static_cast<double>(*steps - 1));
    return values;
}

/// "thermal.temperature" as section and key. The section has to be there.
RecipeVariation ScannedSetting(RecipeTable& scan, const toml::table& recipe) {
    const std::string path = scan.Text("vary", "");
    const std::size_t dot = path.find('.');
    if (dot == std::string::npos) scan.Fail("vary", "has to name a setting, such as \"thermal.temperature\"");
    RecipeVariation where{path.substr(0, dot), path.substr(dot + 1), {}};
    if (!recipe[where.section].is_table())
        scan.Fail("vary", "the recipe has no table [" + where.section + "]");
    return where;
}

}  // namespace

std::vector<RecipeGroup> ExpandRecipe(const toml::table& recipe) {
    RecipeTable scan = RecipeTable(&recipe, "recipe").Section("scan");
    if (!scan.Exists()) return {{0.0, ExpandSeries({recipe, {}})}};
    const RecipeVariation where = ScannedSetting(scan, recipe);
    std::vector<RecipeGroup> groups;
    for (const double value : ScanValues(scan)) {
        RecipeCase one{recipe, {{where.section, where.key, where.key + "_" + DoubleToText(value)}}};
        SetNumber(one.settings, where, value);
        groups.push_back({value, ExpandSeries(std::move(one))});
    }
    scan.RefuseUnread();
    return groups;
}
