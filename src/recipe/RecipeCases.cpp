#include "recipe/RecipeCases.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "foundation/FileReading.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "recipe/RecipeEnergies.h"
#include "recipe/RecipeTable.h"

namespace qvre {

namespace {

constexpr std::size_t kMostCases = 1000;

struct SeriesKey {
    const char* section;
    const char* key;
    const char* before;  // around the value in a label
    const char* after;
};

constexpr std::array<SeriesKey, 5> kSeriesKeys = {{
    {"cluster", "emitter-layer", "layer", ""},
    {"emission", "kinetic", "", "eV"},
    {"emission", "photon", "photon", "eV"},
    {"emission", "circular", "", ""},
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

using Value = RecipeTable::Scalar;

/// A setting and the one value that it has in a case.
struct Assignment {
    RecipeVariation where;
    Value value;
    bool varies = true;  ///< false for a list of one value, which needs no name
    std::optional<std::size_t> member =
        std::nullopt;  ///< of the list that makes a series; none for a scanned value
};

using Assignments = std::vector<Assignment>;

std::string LabelOf(const Value& value) {
    if (const auto* text = std::get_if<std::string>(&value)) return Label(*text);
    if (const auto* whole = std::get_if<std::int64_t>(&value))
        return DoubleToText(static_cast<double>(*whole));
    return DoubleToText(std::get<double>(value));
}

/// A whole number stays one, for the settings that count something.
Value ValueOf(double number) {
    if (std::abs(number) < 1e15 && number == std::floor(number)) return static_cast<std::int64_t>(number);
    return number;
}

struct RecipeText {
    std::string text;
    std::string path;
};

toml::table Parse(const RecipeText& recipe) {
    try {
        return toml::parse(recipe.text, recipe.path);
    } catch (const toml::parse_error& error) {
        std::string message = recipe.path;
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
    if (assignment.member) {  // moved out of the list, it knows its line
        toml::array list = std::move(*table->get_as<toml::array>(key));
        table->insert_or_assign(key, std::move(list[*assignment.member]));
    } else {
        std::visit([&](const auto& value) { table->insert_or_assign(key, value); }, assignment.value);
    }
}

RecipeCase MakeCase(const RecipeText& text, const Assignments& assignments) {
    RecipeCase one{Parse(text), {}};
    for (const Assignment& assignment : assignments) {
        Assign(one.settings, assignment);
        if (assignment.varies) one.variations.push_back(assignment.where);
    }
    return one;
}

/// The different values of a list that makes a series.
std::vector<Value> SeriesValues(RecipeTable& section, const char* key) {
    std::vector<Value> values = section.Scalars(key);
    if (values.empty()) section.Fail(key, "the list is empty");
    for (auto value = values.begin(); value != values.end(); ++value)
        if (std::find(values.begin(), value, *value) != value)
            section.Fail(key, LabelOf(*value) + " stands twice in the list");
    return values;
}

/// Replaces every member by one for each value of the list at the key, if there is a list.
void ExpandKey(std::vector<Assignments>& members, const SeriesKey& series, const toml::table& recipe) {
    if (!ListAt(recipe, series)) return;
    RecipeTable section = RecipeTable(&recipe, "recipe").Section(series.section);
    const std::vector<Value> values = SeriesValues(section, series.key);
    if (members.size() * values.size() > kMostCases)
        section.Fail(series.key, "makes more than 1000 calculations of the recipe");
    std::vector<Assignments> expanded;
    for (const Assignments& member : members) {
        for (std::size_t i = 0; i < values.size(); ++i) {
            RecipeVariation where{series.section, series.key, series.before + LabelOf(values[i])};
            if (!std::holds_alternative<std::string>(values[i])) where.label += series.after;
            expanded.push_back(member);
            expanded.back().push_back({std::move(where), values[i], values.size() > 1, i});
        }
    }
    members = std::move(expanded);
}

/// One member for each energy of [energies].
std::vector<Assignments> EnergyMembers(const RecipeEnergies& energies, const Assignments& first) {
    const auto series = std::find_if(kSeriesKeys.begin(), kSeriesKeys.end(), [&](const SeriesKey& one) {
        return std::strcmp(one.key, energies.Key()) == 0;
    });
    std::vector<Assignments> members;
    for (const double energy_eV : energies.values_eV) {
        RecipeVariation where{series->section, series->key,
                              series->before + DoubleToText(energy_eV) + series->after};
        members.push_back(first);
        members.back().push_back({std::move(where), energies.Setting(energy_eV)});
    }
    return members;
}

RecipeGroup MakeGroup(const RecipeText& text, const toml::table& recipe, double scanned,
                      const Assignments& first) {
    std::vector<Assignments> members = {first};
    const RecipeTable settings(&recipe, "recipe");
    if (const auto energies = ReadEnergies(settings)) {
        CheckBesideEnergies(settings, *energies);
        members = EnergyMembers(*energies, first);
    }
    for (const SeriesKey& series : kSeriesKeys) ExpandKey(members, series, recipe);
    RecipeGroup group{scanned, {}};
    for (const Assignments& member : members) group.cases.push_back(MakeCase(text, member));
    return group;
}

std::vector<double> ScanValues(RecipeTable& scan) {
    std::vector<double> values = scan.Numbers("values", RecipeUnit::kNone);
    const auto from = scan.Number("from", RecipeUnit::kNone);
    const auto to = scan.Number("to", RecipeUnit::kNone);
    const auto steps = scan.Integer("steps");
    if (!values.empty()) {
        if (from || to || steps) scan.Fail("values", "give either values, or from, to and steps");
        if (values.size() > kMostCases) scan.Fail("values", "are more than 1000");
        return values;
    }
    if (!from || !to || !steps || *steps < 2 || *steps > static_cast<std::int64_t>(kMostCases))
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

std::string ReadRecipe(const std::string& path) {
    constexpr std::uintmax_t kMostBytes = 16U << 20U;
    std::error_code failure;
    if (std::filesystem::is_directory(path, failure))
        throw ZfError(path + " is a folder, not a recipe: name the recipe's file (.toml)");
    if (std::filesystem::is_regular_file(path, failure) &&
        std::filesystem::file_size(path, failure) > kMostBytes)
        throw ZfError(path + " is too large to be a recipe");
    return ReadTextFile(path);
}

std::vector<RecipeGroup> ExpandRecipe(const std::string& text, const std::string& path) {
    const RecipeText source{text, path};
    const toml::table recipe = Parse(source);
    RecipeTable scan = RecipeTable(&recipe, "recipe").Section("scan");
    std::vector<RecipeGroup> groups;
    if (!scan.Exists()) {
        groups.push_back(MakeGroup(source, recipe, 0.0, {}));
        return groups;
    }
    RecipeVariation where = ScannedSetting(scan, recipe);
    std::size_t cases = 0;
    for (const double value : ScanValues(scan)) {
        where.label = Label(where.key) + "_" + DoubleToText(value);
        groups.push_back(MakeGroup(source, recipe, value, {{where, ValueOf(value), true}}));
        cases += groups.back().cases.size();
        if (cases > kMostCases)
            scan.Fail("vary", "makes, with the series, more than 1000 calculations of the recipe");
    }
    scan.RefuseUnread();
    return groups;
}

}  // namespace qvre
