#include "recipe/RecipeFit.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <limits>

#include "foundation/Expression.h"
#include "recipe/RecipeParameters.h"
#include "recipe/RecipeTable.h"

namespace qvre {

namespace {

constexpr int kMostEvaluations = 1000000;

const RecipeParameter& Find(const RecipeTable& section, const std::string& key,
                            const std::vector<RecipeParameter>& parameters, const std::string& name) {
    const auto found = std::find_if(parameters.begin(), parameters.end(),
                                    [&](const RecipeParameter& one) { return one.name == name; });
    if (found != parameters.end()) return *found;
    std::vector<std::string> known;
    known.reserve(parameters.size());
    for (const RecipeParameter& one : parameters) known.push_back(one.name);
    section.Fail(key, fmt::format("there is no parameter {}; there are {}", name, fmt::join(known, ", ")));
}

bool IsFree(const RecipeParameter& parameter) {
    return parameter.expression.empty() && parameter.lower && parameter.upper;
}

std::vector<std::string> FittedParameters(RecipeTable& recipe,
                                          const std::vector<RecipeParameter>& parameters) {
    RecipeTable section = recipe.Section("fit");
    const RecipeTable numbers = recipe.Section("parameters");
    std::vector<std::string> fitted;
    if (section.Has("parameters")) {
        fitted = section.Texts("parameters");
    } else {
        for (const RecipeParameter& parameter : parameters) {
            if (IsFree(parameter)) fitted.push_back(parameter.name);
            if (parameter.lower.has_value() != parameter.upper.has_value())
                numbers.Fail(parameter.name, "has one bound alone: a fit needs lower and upper");
        }
    }
    if (fitted.empty())
        (section.Exists() ? section : recipe)
            .Fail(
                "parameters",
                "there is nothing to fit: give numbers of [parameters] bounds, such as d12 = { start = 1.8, "
                "lower = 1.5, upper = 2.1, unit = \"angstrom\" }");
    for (auto name = fitted.begin(); name != fitted.end(); ++name) {
        const RecipeParameter& parameter = Find(section, "parameters", parameters, *name);
        if (std::find(fitted.begin(), name, *name) != name)
            section.Fail("parameters", *name + " stands twice in the list");
        if (!parameter.expression.empty())
            section.Fail("parameters",
                         fmt::format("{} is {}: fit those that it depends on", *name, parameter.expression));
        if (!IsFree(parameter))
            section.Fail("parameters", fmt::format("{} has no bounds: a fit needs lower and upper", *name));
    }
    return fitted;
}

std::map<std::string, std::string> DerivedQuantities(RecipeTable section,
                                                     const std::vector<RecipeParameter>& parameters) {
    std::map<std::string, std::string> derived;
    for (const std::string& name : section.Keys()) {
        const auto isSame = [&](const RecipeParameter& one) { return one.name == name; };
        if (std::any_of(parameters.begin(), parameters.end(), isSame))
            section.Fail(name, "there is a parameter of this name already");
        derived[name] = section.Text(name, "");
        section.Made(name, [&] { static_cast<void>(Expression(derived[name])); });
    }
    return derived;
}

int CountBetween(RecipeTable& section, const char* key, int least, int most, int fallback) {
    const std::int32_t count = section.Count(key, fallback);
    if (section.Has(key) && (count < least || count > most))
        section.Fail(key, fmt::format("has to be a whole number from {} to {}", least, most));
    return count;
}

std::array<double, 2> Range(RecipeTable& section, const char* key, std::array<double, 2> fallback,
                            double most) {
    const std::vector<double> range = section.Numbers(key, RecipeUnit::kDegree);
    if (range.empty()) return fallback;
    if (range.size() != 2 || !(range[0] < range[1] && range[1] - range[0] <= most))
        section.Fail(
            key,
            fmt::format("has to be a list of two angles, the lower one first, at most {:g} degrees apart",
                        most));
    return {range[0], range[1]};
}

std::map<std::string, double> ReadTruth(RecipeTable section, const std::vector<RecipeParameter>& parameters) {
    std::map<std::string, double> truth;
    for (const std::string& name : section.Keys()) {
        const RecipeParameter& parameter = Find(section, name, parameters, name);
        if (!parameter.expression.empty())
            section.Fail(name,
                         fmt::format("is {}: give the parameters that it depends on", parameter.expression));
        const double value = *section.Number(name, RecipeUnit::kNone);
        if ((parameter.lower && value < *parameter.lower) || (parameter.upper && value > *parameter.upper))
            section.Fail(name, fmt::format("the true value {:g} lies outside of the bounds", value));
        truth[name] = value;
    }
    return truth;
}

std::map<std::string, double> ReadShake(RecipeTable section, const std::vector<std::string>& fitted) {
    std::map<std::string, double> shake;
    for (const std::string& name : section.Keys()) {
        if (std::find(fitted.begin(), fitted.end(), name) == fitted.end())
            section.Fail(name, fmt::format("is not fitted, and has no start to be shaken; fitted are {}",
                                           fmt::join(fitted, ", ")));
        shake[name] = *section.Number(name, RecipeUnit::kNone);
    }
    return shake;
}

FitSimulation ReadSimulation(RecipeTable section, const std::vector<RecipeParameter>& parameters,
                             const std::vector<std::string>& fitted) {
    FitSimulation simulation;
    simulation.truth = ReadTruth(section.Section("truth"), parameters);
    simulation.shake = ReadShake(section.Section("shake"), fitted);
    simulation.counts = section.Number("counts", RecipeUnit::kNone, simulation.counts);
    if (!(simulation.counts >= 1.0 && simulation.counts <= 1e15))
        section.Fail("counts", "has to lie between 1 and 1e15, the mean of a direction");
    simulation.rotation_deg = section.Number("rotation", RecipeUnit::kDegree, simulation.rotation_deg);
    simulation.thetaOffset_deg =
        section.Number("theta-offset", RecipeUnit::kDegree, simulation.thetaOffset_deg);
    simulation.theta_deg = Range(section, "theta", simulation.theta_deg, 90.0);
    if (simulation.theta_deg[0] < 0.0 || simulation.theta_deg[1] > 90.0)
        section.Fail("theta", "has to lie between 0 and 90 degrees");
    simulation.phi_deg = Range(section, "phi", simulation.phi_deg, 360.0);
    simulation.step_deg = section.Number("step", RecipeUnit::kDegree, simulation.step_deg);
    if (!(simulation.step_deg >= 0.25 && simulation.step_deg <= 30.0))
        section.Fail("step", "has to lie between 0.25 and 30 degrees");
    section.RefuseUnread();
    return simulation;
}

}  // namespace

RecipeFit ReadFit(const toml::table& recipe) {
    const std::vector<RecipeParameter> parameters = ReadParameters(recipe);
    RecipeTable root(&recipe, "recipe");
    RecipeTable section = root.Section("fit");
    RecipeFit fit;
    fit.parameters = FittedParameters(root, parameters);
    section.Has("parameters");
    fit.derived = DerivedQuantities(section.Section("derived"), parameters);
    fit.search = section.Word("search", fit.search);
    fit.descent = section.Word("method", fit.descent);
    fit.phases = section.Word("phases", fit.phases);
    fit.amplitude = section.Word("amplitude", fit.amplitude);
    fit.seed = static_cast<std::uint64_t>(
        CountBetween(section, "seed", 0, std::numeric_limits<std::int32_t>::max(), 1));
    fit.evaluations = CountBetween(section, "evaluations", 2, kMostEvaluations, 0);
    fit.population = CountBetween(section, "population", 4, kMostEvaluations, 0);
    if (fit.evaluations > 0 && fit.population > fit.evaluations)
        section.Fail("population", "is more than all evaluations");
    fit.minima = CountBetween(section, "minima", 1, kMostEvaluations, fit.minima);
    fit.findsErrors = section.Flag("errors", true);
    fit.independentData = section.Number("independent-data", RecipeUnit::kNone);
    if (fit.independentData && !(*fit.independentData >= 1.0))
        section.Fail("independent-data", "has to be 1 at least");
    fit.simulation = ReadSimulation(section.Section("simulate"), parameters, fit.parameters);
    section.RefuseUnread();
    return fit;
}

}  // namespace qvre
