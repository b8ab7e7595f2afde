#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>

#include "foundation/ProgramFile.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "run/RunProgress.h"
#include "run/RunStages.h"

namespace qvre {

namespace {

constexpr const char* kFooter =
    "The method FULL solves multiple scattering exactly: all paths over all atoms, in any direction. It "
    "needs\n"
    "an emitter in the cluster; docs/full-scattering.md tells more. The result is a scattered wave as "
    "cmd_qvre\n"
    "writes it, and goes on as any other:\n"
    "\n"
    "Examples:\n"
    "  qvre scatter cluster.xyz emitter.xml_emt phaseshift.xml_ph -o scatteredwave.xml_sf\n"
    "  cmd_qvre -W scatteredwave.xml_sf -I pattern.xml_img -I0 i0.xml_img\n";

struct ScatterOptions {
    ScatteringRequest request;
    double imfp_angstrom = 0.0;
    std::string output;
};

void Run(ScatterOptions& options) {
    CheckOutput(options.output, ".xml_sf");
    ScatteringRequest& request = options.request;
    if (request.method != kFull && (options.imfp_angstrom > 0.0 || !request.fluctuationFile.empty()))
        throw CLI::ValidationError(options.imfp_angstrom > 0.0 ? "--imfp" : "--fluctuation",
                                   "is for the method FULL; the others take it with the image");
    if (request.method != kFull && request.full.tolerance != FullScatteringSettings().tolerance)
        throw CLI::ValidationError("--tolerance", "is for the method FULL");
    request.full.meanFreePath = options.imfp_angstrom * 1e-10;
    request.atomicWeightFile = ProgramFile("AtomicWeight.txt");
    const InterruptRequest interrupt;
    const std::string remarks = CalculateScattering(request, options.output);
    std::printf("%s\n%s", options.output.c_str(), remarks.c_str());
}

}  // namespace

void AddScatterCommand(CLI::App& program) {
    CLI::App* const command =
        program.add_subcommand("scatter", "Calculate the scattered wave, exactly or in order");
    const auto options = std::make_shared<ScatterOptions>();
    ScatteringRequest& request = options->request;
    request.method = kFull;
    command->add_option("CLUSTER", request.clusterFile, "Cluster (.xml_cl, .xyz)")
        ->required()
        ->type_name("FILE");
    command->add_option("WAVES", request.wavesFile, "Emitted waves (.xml_emt)")
        ->required()
        ->type_name("FILE");
    command->add_option("PHASES", request.phaseShiftFile, "Phase shifts (.xml_ph)")
        ->required()
        ->type_name("FILE");
    command->add_option("-o,--output", options->output, "Scattered wave (.xml_sf)")
        ->required()
        ->type_name("FILE");
    command->add_option("--method", request.method, "FULL (default), MULTI, SLOWMULTI or SINGLE")
        ->transform(WordOf<ScatteringMethod>())
        ->option_text("NAME");
    command
        ->add_option(
            "--imfp", options->imfp_angstrom,
            "Inelastic mean free path in angstrom, along every path from atom to atom; default: none")
        ->check(AboveZero())
        ->option_text("LENGTH");
    command
        ->add_option("--fluctuation", request.fluctuationFile,
                     "How the atoms vibrate (.xml_flu); default: they are at rest")
        ->type_name("FILE");
    command
        ->add_option("--tolerance", request.full.tolerance,
                     "Residual at which the solution of FULL is taken, relative")
        ->check(Between(kLeastTolerance, kLargestTolerance))
        ->capture_default_str();
    command->footer(kFooter);
    command->callback([options] { Run(*options); });
}

}  // namespace qvre
