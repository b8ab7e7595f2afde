#include "structure/FitPlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>
#include <sstream>

#include "foundation/Text.h"
#include "recipe/RecipeDataSets.h"
#include "recipe/RecipeParameters.h"
#include "recipe/RecipePlan.h"
#include "run/Fingerprint.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

/// A change that a pattern shows clearly, in the unit; 0: not known.
double ScaleIn(const std::string& unit) {
    switch (KindOfUnit(unit)) {
        case RecipeUnit::kAngstrom:
            return 0.1 / UnitFactor(unit);
        case RecipeUnit::kDegree:
            return 3.0 / UnitFactor(unit);
        case RecipeUnit::kElectronVolt:
            return 2.0 / UnitFactor(unit);
        case RecipeUnit::kKelvin:
            return 30.0 / UnitFactor(unit);
        case RecipeUnit::kPercent:
            return 3.0 / UnitFactor(unit);
        case RecipeUnit::kNone:
            break;
    }
    return 0.0;
}

FitParameter FittedOf(const RecipeParameter& parameter) {
    FitParameter fitted;
    fitted.name = parameter.name;
    fitted.start = parameter.start;
    fitted.lower = *parameter.lower;
    fitted.upper = *parameter.upper;
    fitted.unit = parameter.unit;
    if (parameter.restraint) fitted.restraint = {parameter.restraint->value, parameter.restraint->sigma};
    fitted.scale = ScaleIn(parameter.unit);
    fitted.plain = UnitFactor(parameter.unit);
    return fitted;
}

/// The parameters of the fit; the others are constants or derived.
ParameterSpace SpaceOf(const toml::table& recipe, const RecipeFit& fit) {
    std::vector<FitParameter> fitted(fit.parameters.size());
    std::vector<DerivedQuantity> derived;
    std::map<std::string, double> constants;
    for (const RecipeParameter& parameter : ReadParameters(recipe)) {
        const auto place = std::find(fit.parameters.begin(), fit.parameters.end(), parameter.name);
        if (place != fit.parameters.end())
            fitted[static_cast<std::size_t>(place - fit.parameters.begin())] = FittedOf(parameter);
        else if (!parameter.expression.empty())
            derived.push_back({parameter.name, parameter.expression, {}});
        else
            constants[parameter.name] = parameter.Plain(parameter.start);
    }
    for (const auto& [name, expression] : fit.derived) derived.push_back({name, expression, {}});
    ParameterSpace space(std::move(fitted), std::move(derived), std::move(constants));
    const std::vector<double> values = space.Derived(space.Start());
    for (std::size_t i = 0; i < values.size(); ++i)
        if (!std::isfinite(values[i]))
            throw ZfError(fmt::format("{} = {} has no finite value at the start", space.derived[i].name,
                                      space.derived[i].expression));
    return space;
}

void RefuseWithoutEffect(const toml::table& recipe, const RecipeFit& fit, const std::string& folder) {
    const std::set<std::string> without = {"picture", "title", "scan", "fit"};
    RecipeTable section = RecipeTable(&recipe, "recipe").Section("parameters");
    for (const std::string& name : fit.parameters) {
        std::set<std::string> sections = SectionsOfParameter(recipe, name, folder);
        for (const std::string& one : without) sections.erase(one);
        if (sections.empty())
            section.Fail(name, "no pattern depends on it: leave it out of the fit, or name it in a value");
    }
}

void RefuseEnergies(const toml::table& recipe) {
    RecipeTable root(&recipe, "recipe");
    std::vector<RecipeTable> tables = root.Sections("data");
    tables.insert(tables.begin(), root);
    for (RecipeTable& table : tables)
        if (table.Has("energies"))
            table.Fail("energies",
                       "a fit compares patterns, and no curves over the energy: leave the section out");
}

/// Texts of the recipe that are names of files.
// NOLINTNEXTLINE(misc-no-recursion): values nest, no deeper than the parser lets them
void FilesNamed(const toml::node& node, const RecipeFolder& place, std::set<std::string>& files) {
    if (const auto text = node.value_exact<std::string>()) {
        std::error_code failure;
        if (!text->empty() && fs::is_regular_file(place.Path(*text), failure))
            files.insert(place.Path(*text));
    }
    if (const toml::array* list = node.as_array())
        for (const toml::node& item : *list) FilesNamed(item, place, files);
    if (const toml::table* table = node.as_table())
        for (const auto& [key, value] : *table) FilesNamed(value, place, files);
}

}  // namespace

FitPlan PlanFit(const std::string& recipePath, const FitChoices& choices) {
    const std::string text = ReadRecipe(recipePath);
    const toml::table recipe = ParseRecipe(text, recipePath);
    const std::string folder = fs::path(recipePath).parent_path().string();
    RecipeFit fit = ReadFit(recipe);
    RefuseEnergies(recipe);
    RefuseUnusedParameters(recipe, folder);
    RefuseWithoutEffect(recipe, fit, folder);
    fit.search = choices.search.value_or(fit.search);
    fit.seed = choices.seed.value_or(fit.seed);
    fit.evaluations = choices.evaluations.value_or(fit.evaluations);
    ParameterSpace space = RecipeTable(&recipe, "recipe").Section("fit").Section("derived").Made("", [&] {
        return SpaceOf(recipe, fit);
    });
    FitPlan plan{recipe["title"].value_or(fs::path(recipePath).stem().string()),
                 recipePath,
                 text,
                 fit,
                 std::move(space),
                 {},
                 {}};
    for (const RecipeDataSet& set : ReadDataSets(recipe)) {
        PlanRecipe(recipePath, {{}, {}, {}, set.name});  // reads all sections
        plan.sources.push_back({text, recipePath, {}, set.name, true});
        plan.weights.push_back(set.weight);
    }
    if (std::none_of(plan.weights.begin(), plan.weights.end(), [](double weight) { return weight > 0.0; }))
        RecipeTable(&recipe, "recipe")
            .Sections("data")
            .front()
            .Fail("weight", "all data sets have the weight 0: give one of them a weight above it");
    return plan;
}

std::vector<std::unique_ptr<FitDataSet>> MakeDataSets(const FitPlan& plan, const FitPoint& at) {
    std::vector<std::unique_ptr<FitDataSet>> sets;
    for (std::size_t i = 0; i < plan.sources.size(); ++i) {
        RecipeSource source = plan.sources[i];
        for (std::size_t k = 0; k < at.size(); ++k) source.values[plan.space.parameters[k].name] = at[k];
        sets.push_back(std::make_unique<FitDataSet>(std::move(source), plan.weights[i], plan.fit));
    }
    return sets;
}

std::vector<std::string> ProblemText(const FitPlan& plan) {
    toml::table recipe = ParseRecipe(plan.text, plan.recipePath);
    const bool isSimulated = !plan.sources.front().settings.empty();
    for (const char* key : {"title", "picture", "scan"}) recipe.erase(key);
    if (toml::table* fit = recipe["fit"].as_table()) {
        for (const char* key :
             {"evaluations", "search", "seed", "minima", "errors", "derived", "independent-data"})
            fit->erase(key);
        if (!isSimulated) fit->erase("simulate");
    }
    std::ostringstream text;
    text << "version " << QVRE_VERSION << '\n' << recipe << '\n';
    text << "search " << WordFor(plan.fit.search) << '\n' << "seed " << plan.fit.seed << '\n';
    std::set<std::string> files;
    FilesNamed(recipe, {fs::path(plan.recipePath).parent_path().string()}, files);
    // A simulated measurement follows from all the rest.
    text << "measurement " << (isSimulated ? "simulated" : "as it is") << '\n';
    for (const std::string& file : files) text << "file " << file << ' ' << FingerprintOfFile(file) << '\n';
    for (const FitParameter& parameter : plan.space.parameters)
        text << fmt::format("start {} {}\n", parameter.name, parameter.start);
    return LineSplit(text.str());
}

}  // namespace qvre
