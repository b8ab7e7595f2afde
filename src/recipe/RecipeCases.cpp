#include "recipe/RecipeCases.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "foundation/FileReading.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "recipe/RecipeDataSets.h"
#include "recipe/RecipeEnergies.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipeParameters.h"
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

/// What the patterns and their comparison depend on; a scan of anything else would change nothing.
constexpr std::array<std::string_view, 8> kScannedSections = {"cluster", "emission",   "light", "phases",
                                                              "thermal", "scattering", "image", "compare"};

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

double NumberOf(const Value& value) {
    const auto* whole = std::get_if<std::int64_t>(&value);
    return whole ? static_cast<double>(*whole) : std::get<double>(value);
}

/// A whole number stays one, for the settings that count something.
Value ValueOf(double number) {
    if (std::abs(number) < 1e15 && number == std::floor(number)) return static_cast<std::int64_t>(number);
    return number;
}

constexpr const char* kParameters = "parameters";
constexpr std::size_t kMostScanned = 2;

std::string FolderOf(const RecipeSource& recipe) {
    return std::filesystem::path(recipe.path).parent_path().string();
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

toml::table Parse(const RecipeSource& recipe) {
    toml::table table = ParseRecipe(recipe.text, recipe.path);
    if (recipe.ignoresScan) table.erase("scan");
    try {
        ChooseDataSet(table, recipe.dataSet);
    } catch (const ZfError& error) {
        throw ZfError(error.message.starts_with(recipe.path) ? error.message
                                                             : recipe.path + ": " + error.message);
    }
    for (const auto& [name, value] : recipe.settings) {
        const std::size_t dot = name.find('.');
        Assign(table, {{name.substr(0, dot), name.substr(dot + 1), {}, false, {}, {}}, value});
    }
    return table;
}

/// The recipe with plain numbers as its parameters, the scanned ones among them.
toml::table ParseResolved(const RecipeSource& text, const Assignments& assignments) {
    NamedValues values = text.values;
    for (const Assignment& assignment : assignments)
        if (assignment.where.section == kParameters)
            values[assignment.where.key] = NumberOf(assignment.value);
    toml::table recipe = Parse(text);
    ResolveParameters(recipe, values);
    return recipe;
}

RecipeCase MakeCase(const RecipeSource& text, const Assignments& assignments) {
    RecipeCase one{ParseResolved(text, assignments), {}};
    for (const Assignment& assignment : assignments) {
        if (assignment.where.section != kParameters) Assign(one.settings, assignment);
        if (assignment.varies) one.variations.push_back(assignment.where);
    }
    return one;
}

RecipeVariation Variation(const std::string& section, const std::string& key, const std::string& label) {
    const bool isLight =
        section == "emission" && std::find(kLightKeys.begin(), kLightKeys.end(), key) != kLightKeys.end();
    return {section, key, label, false, {}, {isLight ? "light" : section}};
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
            RecipeVariation where = Variation(series.section, series.key, series.before + LabelOf(values[i]));
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
        RecipeVariation where =
            Variation(series->section, series->key, series->before + DoubleToText(energy_eV) + series->after);
        members.push_back(first);
        members.back().push_back({std::move(where), energies.Setting(energy_eV)});
    }
    return members;
}

RecipeGroup MakeGroup(const RecipeSource& text, const std::vector<double>& scanned,
                      const Assignments& first) {
    const toml::table recipe = ParseResolved(text, first);
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

/// One setting of a scan with its values.
struct ScanAxis {
    RecipeVariation where;
    std::vector<double> values;
};

/// The numbers at a key: one, or one for each scanned setting.
std::optional<double> EntryOf(RecipeTable& scan, const std::string& key, std::size_t axis,
                              std::size_t count) {
    if (!scan.Has(key)) return std::nullopt;
    const std::vector<double> numbers = scan.Numbers(key, RecipeUnit::kNone);
    if (numbers.size() != count && numbers.size() != 1)
        scan.Fail(key, "has to be one number, or one for each of the scanned settings");
    return numbers[numbers.size() == 1 ? 0 : axis];
}

/// A list, or of two settings a list of lists.
std::vector<double> ListedValues(RecipeTable& scan, const toml::table& table, std::size_t axis,
                                 std::size_t count) {
    if (count == 1) return scan.Numbers("values", RecipeUnit::kNone);
    scan.Has("values");
    const toml::array* lists = table["values"].as_array();
    if (!lists) return {};
    const toml::array* list = lists->size() == count ? (*lists)[axis].as_array() : nullptr;
    if (!list)
        scan.Fail("values", "has to be a list of two lists, or give a table [[scan]] for each setting");
    std::vector<double> values;
    for (const toml::node& item : *list) {
        values.push_back(item.value<double>().value_or(NAN));
        if (!std::isfinite(values.back())) scan.Fail("values", "has to be lists of numbers");
    }
    return values;
}

std::vector<double> ScanValues(RecipeTable& scan, const toml::table& table, std::size_t axis,
                               std::size_t count) {
    std::vector<double> values = ListedValues(scan, table, axis, count);
    const auto from = EntryOf(scan, "from", axis, count);
    const auto to = EntryOf(scan, "to", axis, count);
    const auto steps = EntryOf(scan, "steps", axis, count);
    if (!values.empty()) {
        if (from || to || steps) scan.Fail("values", "give either values, or from, to and steps");
        if (values.size() > kMostCases) scan.Fail("values", "are more than 1000");
        for (auto value = values.begin(); value != values.end(); ++value)
            if (std::find(values.begin(), value, *value) != value)
                scan.Fail("values", DoubleToText(*value) + " stands twice in the list");
        return values;
    }
    if (!from || !to || !steps || !(*steps >= 2.0) || *steps > static_cast<double>(kMostCases) ||
        *steps != std::floor(*steps))
        scan.Fail("vary", "give values, or from, to and steps (2 to 1000)");
    if (*from == *to) scan.Fail("to", "has to differ from the value of from");
    for (double i = 0.0; i < *steps; ++i) values.push_back(*from + (*to - *from) * i / (*steps - 1.0));
    return values;
}

RecipeVariation ScannedParameter(RecipeTable& scan, const toml::table& recipe, const std::string& name,
                                 const std::string& folder) {
    RecipeVariation where{kParameters, name, {}, true, {}, {}};
    const std::vector<RecipeParameter> parameters = ReadParameters(recipe);
    if (parameters.empty())
        scan.Fail("vary",
                  "has to name a setting, such as \"thermal.temperature\", or a number of "
                  "[parameters]");
    NamedValues scanned = {{name, 0.0}};
    for (const RecipeParameter& parameter : parameters) {
        if (parameter.name != name) continue;
        where.unit = parameter.unit;
        scanned[name] = parameter.start;
    }
    scan.Made("vary", [&] { ParameterValues(parameters, scanned); });
    where.sections = SectionsOfParameter(recipe, name, folder);
    for (const std::string& section : where.sections)
        if (std::find(kScannedSections.begin(), kScannedSections.end(), section) == kScannedSections.end())
            scan.Fail("vary", fmt::format("[{}] uses {}, and cannot vary in a scan", section, name));
    return where;
}

/// "thermal.temperature" as section and key, or a parameter.
RecipeVariation ScannedSettingOf(RecipeTable& scan, const toml::table& recipe, const std::string& path,
                                 const std::string& folder) {
    const std::size_t dot = path.find('.');
    if (dot == std::string::npos) return ScannedParameter(scan, recipe, path, folder);
    RecipeVariation where = Variation(path.substr(0, dot), path.substr(dot + 1), {});
    where.isScanned = true;
    if (std::find(kScannedSections.begin(), kScannedSections.end(), where.section) == kScannedSections.end())
        scan.Fail("vary",
                  "has to name a parameter, or a setting of [cluster], [emission], [phases], [thermal], "
                  "[scattering], [image] or [compare]");
    for (const SeriesKey& series : kSeriesKeys)
        if (where.section == series.section && where.key == series.key && ListAt(recipe, series))
            scan.Fail("vary", path + " is a list, which makes a series: give it one value");
    return where;
}

/// The settings of one table [scan].
std::vector<ScanAxis> ReadScanTable(RecipeTable& scan, const toml::table& table, const toml::table& recipe,
                                    const std::string& folder) {
    const std::vector<std::string> names = scan.Has("vary") ? scan.Texts("vary") : std::vector<std::string>{};
    if (names.empty() || names.size() > kMostScanned)
        scan.Fail("vary", "has to name one or two settings or parameters, such as \"thermal.temperature\"");
    std::vector<ScanAxis> axes;
    for (std::size_t i = 0; i < names.size(); ++i)
        axes.push_back(
            {ScannedSettingOf(scan, recipe, names[i], folder), ScanValues(scan, table, i, names.size())});
    scan.RefuseUnread();
    return axes;
}

std::vector<ScanAxis> ReadScan(const toml::table& recipe, const std::string& folder) {
    RecipeTable root(&recipe, "recipe");
    std::vector<RecipeTable> tables = root.Sections("scan");
    std::vector<ScanAxis> axes;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const toml::array* list = recipe["scan"].as_array();
        const toml::table& table = list ? *(*list)[i].as_table() : *recipe["scan"].as_table();
        for (ScanAxis& axis : ReadScanTable(tables[i], table, recipe, folder)) {
            for (const ScanAxis& other : axes)
                if (other.where.Name() == axis.where.Name())
                    tables[i].Fail("vary", axis.where.Name() + " is scanned already");
            axes.push_back(std::move(axis));
        }
        if (axes.size() > kMostScanned) tables[i].Fail("vary", "a scan varies two settings at most");
    }
    return axes;
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

toml::table ParseRecipe(const std::string& text, const std::string& path) {
    try {
        return toml::parse(text, path);
    } catch (const toml::parse_error& error) {
        std::string message = path;
        if (error.source().begin.line > 0) message += " line " + std::to_string(error.source().begin.line);
        throw ZfError(message + ": " + std::string(error.description()));
    }
}

std::string SectionText(const RecipeCase& one, const std::string& section, bool withLight,
                        const std::string& folder) {
    const toml::table* table = one.settings[section].as_table();
    if (!table) return {};
    toml::table content = *table;
    if (!withLight)
        for (const char* key : kLightKeys) content.erase(key);
    std::ostringstream text;
    text << section << '\n' << content << '\n';
    for (const std::string& used : NamesUsed(content, folder))
        if (const auto value = one.settings["parameters"][used].value<double>())
            text << fmt::format("{} = {}\n", used, *value);
    return text.str();
}

std::string RecipeVariation::Name() const {
    return section == kParameters ? key : section + "." + key;
}

std::vector<RecipeGroup> ExpandRecipe(const RecipeSource& source) {
    RefuseUnusedParameters(ParseRecipe(source.text, source.path), FolderOf(source));
    const toml::table recipe = Parse(source);
    const std::vector<ScanAxis> axes = ReadScan(recipe, FolderOf(source));
    std::size_t points = 1;
    for (const ScanAxis& axis : axes) points *= axis.values.size();
    std::vector<RecipeGroup> groups;
    std::size_t cases = 0;
    for (std::size_t point = 0; point < points && cases <= kMostCases; ++point) {
        std::vector<double> scanned;
        Assignments assignments;
        for (std::size_t rest = point, i = axes.size(); i-- > 0; rest /= axes[i].values.size()) {
            const double value = axes[i].values[rest % axes[i].values.size()];
            Assignment assignment{axes[i].where, ValueOf(value)};
            assignment.where.label = Label(assignment.where.key) + "_" + DoubleToText(value);
            assignments.insert(assignments.begin(), std::move(assignment));
            scanned.insert(scanned.begin(), value);
        }
        groups.push_back(MakeGroup(source, scanned, assignments));
        cases += groups.back().cases.size();
    }
    if (cases > kMostCases)
        RecipeTable(&recipe, "recipe")
            .Sections("scan")
            .front()
            .Fail("vary", "makes, with the series, more than 1000 calculations of the recipe");
    return groups;
}

}  // namespace qvre
