#include "recipe/RecipeCases.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <utility>
#include <variant>

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

const toml::array* ListAt(const toml::table& recipe, const SeriesKey& series) {
    return recipe[series.section][series.key].as_array();
}

/// What the patterns depend on; a scan of anything else would calculate the same one again.
constexpr std::array<std::string_view, 6> kScannedSections = {"cluster", "emission",   "phases",
                                                              "thermal", "scattering", "image"};

/// A text as part of a file name, without what a shell or a file system could stumble on.
std::string Label(const std::string& text) {
    std::string label;
    for (const char c : text)
        if (std::isalnum(static_cast<unsigned char>(c)) != 0 || std::strchr("._+-", c)) label += c;
    return label;
}

std::string LabelOf(const toml::node& value) {
    if (value.is_number()) return DoubleToText(value.value<double>().value_or(0.0));
    return Label(value.value<std::string>().value_or(""));
}

using Value = std::variant<std::int64_t, double, std::string>;

/// A setting and the one value that it has in a case.
struct Assignment {
    RecipeVariation where;
    Value value;
    bool varies = true;  ///< false for a list of one value, which needs no name
};

using Assignments = std::vector<Assignment>;

Value ValueOf(const toml::node& node) {
    if (node.is_integer()) return node.value<std::int64_t>().value_or(0);
    if (node.is_floating_point()) return node.value<double>().value_or(0.0);
    return node.value<std::string>().value_or("");
}

/// A whole number stays one, for the settings that count something.
Value ValueOf(double number) {
    if (std::abs(number) < 1e15 && number == std::floor(number)) return static_cast<std::int64_t>(number);
    return number;
}

toml::table Parse(const std::string& path) {
    try {
        return toml::parse_file(path);
    } catch (const toml::parse_error& error) {
        std::string message = path;
        if (error.source().begin.line > 0) message += " line " + std::to_string(error.source().begin.line);
        throw ZfError(message + ": " + std::string(error.description()));
    }
}

/// Tables that the recipe leaves out are made.
void Assign(toml::table& settings, const Assignment& assignment) {
    const std::string setting = assignment.where.section + "." + assignment.where.key;
    toml::table* table = &settings;
    std::string key = setting;
    for (std::size_t dot = key.find('.'); dot != std::string::npos; dot = key.find('.')) {
        table = table->emplace<toml::table>(key.substr(0, dot)).first->second.as_table();
        if (!table) throw ZfError("There is no setting " + setting + " to be varied");
        key.erase(0, dot + 1);
    }
    std::visit([&](const auto& value) { table->insert_or_assign(key, value); }, assignment.value);
}

RecipeCase MakeCase(const std::string& path, const Assignments& assignments) {
    RecipeCase one{Parse(path), {}};
    for (const Assignment& assignment : assignments) {
        Assign(one.settings, assignment);
        if (assignment.varies) one.variations.push_back(assignment.where);
    }
    return one;
}

/// Replaces every member by one for each value of the list at the key, if there is a list.
void ExpandKey(std::vector<Assignments>& members, const SeriesKey& series, const toml::table& recipe) {
    const toml::array* list = ListAt(recipe, series);
    if (!list) return;
    if (list->empty())
        throw ZfError("The list " + std::string(series.section) + "." + series.key + " is empty");
    std::vector<Assignments> expanded;
    for (const Assignments& member : members) {
        for (const toml::node& value : *list) {
            RecipeVariation where{series.section, series.key, series.before + LabelOf(value)};
            if (value.is_number()) where.label += series.after;
            expanded.push_back(member);
            expanded.back().push_back({std::move(where), ValueOf(value), list->size() > 1});
        }
    }
    members = std::move(expanded);
}

RecipeGroup MakeGroup(const std::string& path, const toml::table& recipe, double scanned,
                      const Assignments& first) {
    std::vector<Assignments> members = {first};
    for (const SeriesKey& series : kSeriesKeys) ExpandKey(members, series, recipe);
    RecipeGroup group{scanned, {}};
    for (const Assignments& member : members) group.cases.push_back(MakeCase(path, member));
    return group;
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

/// "thermal.temperature" as section and key.
RecipeVariation ScannedSetting(RecipeTable& scan, const toml::table& recipe) {
    const std::string path = scan.Text("vary", "");
    const std::size_t dot = path.find('.');
    if (dot == std::string::npos) scan.Fail("vary", "has to name a setting, such as \"thermal.temperature\"");
    RecipeVariation where{path.substr(0, dot), path.substr(dot + 1), {}};
    if (std::find(kScannedSections.begin(), kScannedSections.end(), where.section) == kScannedSections.end())
        scan.Fail(
            "vary",
            "has to name a setting of [cluster], [emission], [phases], [thermal], [scattering] or [image]");
    for (const SeriesKey& series : kSeriesKeys)
        if (where.section == series.section && where.key == series.key && ListAt(recipe, series))
            scan.Fail("vary", path + " is a list, which makes a series: give it one value");
    return where;
}

}  // namespace

std::vector<RecipeGroup> ExpandRecipe(const std::string& path) {
    const toml::table recipe = Parse(path);
    RecipeTable scan = RecipeTable(&recipe, "recipe").Section("scan");
    std::vector<RecipeGroup> groups;
    if (!scan.Exists()) {
        groups.push_back(MakeGroup(path, recipe, 0.0, {}));
        return groups;
    }
    RecipeVariation where = ScannedSetting(scan, recipe);
    for (const double value : ScanValues(scan)) {
        where.label = Label(where.key) + "_" + DoubleToText(value);
        groups.push_back(MakeGroup(path, recipe, value, {{where, ValueOf(value), true}}));
    }
    scan.RefuseUnread();
    return groups;
}
