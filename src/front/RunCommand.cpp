#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "recipe/RecipePlan.h"
#include "run/CarryOut.h"

namespace qvre {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  qvre run examples/cu001_small.toml\n"
    "  qvre run examples/cu001_small.toml --compare measured.csv -o results\n"
    "\n"
    "A recipe (TOML) names the cluster, the emission, the vibrations, the image and the pictures of a\n"
    "calculation. Steps whose settings did not change since the last run in the folder are not repeated.\n"
    "Ctrl-C stops a run; the same command goes on.\n";

struct RunOptions {
    std::string recipe;
    RecipeOptions plan;
    std::vector<std::string> values;  // of parameters, "d12=1.77"
    bool repeatsAll = false;          // the steps that are done too
};

/// "d12=1.77", in the unit of the parameter.
void AddValue(const std::string& text, NamedValues& values) {
    const std::size_t sign = text.find('=');
    if (sign == std::string::npos)
        throw ZfError("--set: \"" + text + "\" is no value of a parameter, such as d12=1.77");
    values[text.substr(0, sign)] = ParseQuantity(text.substr(sign + 1), RecipeUnit::kNone);
}

void Run(const RunOptions& options) {
    RecipeOptions plan = options.plan;
    for (const std::string& value : options.values) AddValue(value, plan.parameters);
    if (plan.folder.empty()) plan.folder = std::filesystem::path(options.recipe).stem().string() + "-results";
    CarryOut(PlanRecipe(options.recipe, plan), options.repeatsAll);
}

}  // namespace

void AddRunCommand(CLI::App& program) {
    CLI::App* const command = program.add_subcommand("run", "Go from a recipe to pictures in one run");
    const auto options = std::make_shared<RunOptions>();
    command->add_option("RECIPE", options->recipe, "Recipe (.toml)")->required()->type_name("FILE");
    command
        ->add_option("-o,--output", options->plan.folder,
                     "Folder of the results; default: the recipe's name with -results, here")
        ->type_name("FOLDER");
    command
        ->add_option("--compare", options->plan.measuredFile,
                     "Measured pattern (CSV of theta, phi, intensity) to compare the result with")
        ->type_name("FILE");
    command
        ->add_option("--data", options->plan.dataSet,
                     "Name of the data set to calculate, of a recipe that has several")
        ->type_name("NAME");
    command
        ->add_option("--set", options->values,
                     "Value of a parameter, in its unit, in place of that in the recipe: d12=1.77")
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE");
    command->add_flag("--repeat", options->repeatsAll, "Repeat the steps that are done too");
    command->footer(kExamples);
    command->callback([options] { Run(*options); });
}

}  // namespace qvre
