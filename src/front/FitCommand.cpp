#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <string>

#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "structure/CarryOutFit.h"

namespace qvre {

namespace {

constexpr const char* kExamples =
    "Examples:\n"
    "  qvre fit examples/fits/o_ni001.toml\n"
    "  qvre fit recipe.toml --search global --seed 7 -o search7\n"
    "  qvre fit recipe.toml --simulate\n"
    "\n"
    "The recipe gives numbers of [parameters] bounds, and [compare] the measured pattern. The folder gets\n"
    "report.txt, report.pdf, fit.json, the evaluations and the best structure; see docs/fits.md. Ctrl-C "
    "stops\n"
    "a fit; the same command goes on. The exit status is 0 when the fit has converged, 3 when it ended at "
    "its\n"
    "limit of evaluations, 4 when it failed.\n";

constexpr int kLimitReached = 3;
constexpr int kNotFitted = 4;

void Run(const FitOptions& given) {
    FitOptions options = given;
    if (options.folder.empty())
        options.folder = std::filesystem::path(options.recipe).stem().string() +
                         (options.simulates ? "-simulated-fit" : "-fit");
    const FitStop stop = CarryOutFit(options);
    if (stop == FitStop::kLimit) throw CommandStatus{kLimitReached};
    if (!IsConverged(stop)) throw CommandStatus{kNotFitted};
}

}  // namespace

void AddFitCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("fit", "Fit the parameters of a recipe to measured patterns");
    const auto options = std::make_shared<FitOptions>();
    command->add_option("RECIPE", options->recipe, "Recipe (.toml)")->required()->type_name("FILE");
    command
        ->add_option("-o,--output", options->folder,
                     "Folder of the results; default: the recipe's name with -fit, here")
        ->type_name("FOLDER");
    command
        ->add_option("--search", options->choices.search, "local, global or sobol, in place of the recipe's")
        ->transform(WordOf<FitSearch>())
        ->option_text("NAME");
    command->add_option("--seed", options->choices.seed, "Seed of the search and of simulated noise")
        ->option_text("NUMBER");
    command->add_option("--evaluations", options->choices.evaluations, "Most evaluations of the search")
        ->check(CLI::Range(2, 1000000))
        ->option_text("NUMBER");
    command->add_flag("--simulate", options->simulates,
                      "Make up the measurement from the recipe, with noise, and tell what the fit recovers");
    command->add_flag("--repeat", options->repeatsAll, "Forget what the folder has of a former fit");
    command->footer(kExamples);
    command->callback([options] { Run(*options); });
}

}  // namespace qvre
