#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "input/ZfEmittedWave.h"
#include "prepare/EnergyList.h"
#include "prepare/PhaseShiftTable.h"
#include "prepare/PhaseShifts.h"
#include "prepare/StrictNumber.h"

namespace {

constexpr const char* kFooter =
    R"(Phase shifts are calculated for every name of an atom in the cluster, at each energy, or taken from a
published table with --table.

Examples:
  qvre phases cluster.xml_cl --energy 560 -o phaseshift.xml_ph
  qvre phases cluster.xml_cl --waves emitter.xml_emt --exchange slater -o phaseshift.xml_ph
  qvre phases --table Cu.phs --format leed --name Cu --radius 1.276 --energy 100:500:50 -o Cu.xml_ph)";

const std::map<std::string, ExchangeKind> kExchanges = {{"furness", ExchangeKind::kFurnessMcCarthy},
                                                        {"slater", ExchangeKind::kSlater},
                                                        {"none", ExchangeKind::kNone}};
const std::map<std::string, PhaseTableFormat> kFormats = {{"leed", PhaseTableFormat::kLeed},
                                                          {"blocks", PhaseTableFormat::kBlocks},
                                                          {"csv", PhaseTableFormat::kCsv}};

struct PhasesOptions {
    PhaseShiftRequest request;
    std::string cluster;
    std::string surroundings;
    std::string table;
    PhaseTableChoice choice;
    bool linear = false;
    bool relativistic = false;
    std::string name;
    std::string element;
    std::vector<std::string> energies;
    std::string waves;
    std::vector<std::string> radii;
    double zero_eV = 0.0;
    std::string output;
    std::string list;
};

void AddSourceOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* cluster =
        command.add_option("cluster", options.cluster, "Cluster, .xml_cl or .xyz: its innermost atoms count");
    CLI::Option* plain = command
                             .add_option("--surroundings", options.surroundings,
                                         "Instead of a cluster: a list of the shells of neighbours of each "
                                         "species (docs/phase-shifts.md)")
                             ->excludes(cluster);
    command.add_option("--table", options.table, "Instead of a cluster: a published table of phase shifts")
        ->excludes(cluster)
        ->excludes(plain);
}

void AddEnergyOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* energy =
        command
            .add_option("--energy", options.energies,
                        "Kinetic energies above the muffin-tin zero, eV: 560, or 200:1500:100, or several "
                        "with commas")
            ->delimiter(',');
    command.add_option("--waves", options.waves, "Take the energies of an emitted-wave file, .xml_emt")
        ->excludes(energy);
}

void AddPhysicsOptions(CLI::App& command, PhasesOptions& options) {
    command
        .add_option("--exchange", options.request.exchange,
                    "Exchange of the electron: furness (after Furness and McCarthy; default), slater or none")
        ->transform(CLI::CheckedTransformer(kExchanges))
        ->option_text("NAME");
    command.add_flag("--relativistic", options.relativistic,
                     "Mass-velocity and Darwin terms, for heavy elements");
    command
        .add_option(
            "--radius", options.radii,
            "Muffin-tin radius, angstrom: 1.276, or by name Ga=1.2,As=1.24; default: half the distance "
            "of the nearest neighbour")
        ->delimiter(',');
    command.add_option("--zero", options.zero_eV,
                       "Muffin-tin zero, eV; default: the average between the spheres");
}

void AddTableOptions(CLI::App& command, PhasesOptions& options) {
    command
        .add_option("--format", options.choice.format,
                    "Format of --table: leed (default), blocks or csv (docs/phase-shifts.md)")
        ->transform(CLI::CheckedTransformer(kFormats))
        ->option_text("NAME");
    command.add_option("--block", options.choice.block, "Block of a table with blocks, from 1")
        ->capture_default_str();
    command.add_option("--name", options.name, "Name of the atoms that a table is for");
    command.add_option("--element", options.element, "Their element; default: the name");
    command.add_flag("--linear", options.linear,
                     "Interpolate a table by straight lines; default: cubic splines");
}

void AddOutputOptions(CLI::App& command, PhasesOptions& options) {
    PhaseShiftLimits& limits = options.request.limits;
    command.add_option("--lmax", limits.lMax, "Largest l")->check(CLI::Range(0, 60))->capture_default_str();
    command.add_option("--cut", limits.cut_deg, "Phase shifts below this end the list, degrees")
        ->check(CLI::NonNegativeNumber)
        ->capture_default_str();
    command
        .add_option("--radial", options.request.radialPoints,
                    "Points of the tables of the wave inside the atom; 0: none")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str();
    command.add_option("--label", options.request.crystal,
                       "Words on the crystal for the records, such as \"Cu a=3.61 A\"");
    command.add_option("--list", options.list, "Write the table that is shown to this file too");
    command.add_option("-o,--output", options.output, "Phase-shift file, .xml_ph")->required();
}

/// Turns a ZfError about an option into bad usage.
template <class Action>
auto Usage(Action action) {
    try {
        return action();
    } catch (const ZfError& error) {
        throw CLI::ValidationError(error.message);
    }
}

std::vector<double> Energies(const PhasesOptions& options) {
    if (!options.waves.empty()) return EnergiesOfWaves(options.waves);
    if (options.energies.empty()) throw CLI::ValidationError("energies are needed: --energy or --waves");
    return Usage([&] { return ParseEnergies(options.energies); });
}

/// "1.276" stands under the empty name.
std::map<std::string, double> Radii(const PhasesOptions& options) {
    std::map<std::string, double> radii;
    for (const std::string& text : options.radii) {
        const std::size_t equals = text.find('=');
        const std::string name = equals == std::string::npos ? "" : text.substr(0, equals);
        const std::string value = equals == std::string::npos ? text : text.substr(equals + 1);
        radii[name] = Usage([&] { return StrictNumber(value, "--radius"); });
    }
    return radii;
}

PhaseShiftResult FromPhysics(PhasesOptions& options) {
    PhaseShiftRequest& request = options.request;
    if (options.surroundings.empty()) {
        ZfCluster cluster;
        ZfLoadCluster(cluster, options.cluster);
        request.species = SurroundingsInCluster(cluster);
    } else {
        request.species = ReadSurroundings(options.surroundings);
    }
    request.radius_angstrom = Radii(options);
    const auto all = request.radius_angstrom.find("");
    if (all != request.radius_angstrom.end()) {
        for (const AtomSurroundings& species : request.species)
            request.radius_angstrom.emplace(species.name, all->second);
        request.radius_angstrom.erase("");
    }
    if (options.relativistic) request.equation = RadialEquation::kScalarRelativistic;
    return CalculatePhaseShifts(request, ScreeningTable(ProgramFile("screening_dhfs.csv")));
}

PhaseShiftResult FromTable(PhasesOptions& options) {
    if (options.name.empty()) throw CLI::ValidationError("--table needs --name: the atoms that it is for");
    const std::string element = options.element.empty() ? options.name : options.element;
    options.choice.element = element;
    const PhaseShiftTable table = ReadPhaseShiftTable(options.table, options.choice);
    const std::map<std::string, double> radii = Radii(options);
    PhaseShiftList list{options.name, element, 0.0, {}, table.radius_angstrom, 0.0, options.table};
    if (!radii.empty()) list.radius_angstrom = radii.begin()->second;
    if (!(list.radius_angstrom > 0.0))
        throw ZfError("The table tells no muffin-tin radius: give it in angstrom with --radius");
    list.neighbour_angstrom = 2.0 * list.radius_angstrom;
    return PhaseShiftsOfTable(table, list, options.request.energies_eV, options.request.limits,
                              options.linear);
}

void CheckSource(const PhasesOptions& options) {
    if (options.cluster.empty() && options.surroundings.empty() && options.table.empty())
        throw CLI::ValidationError("a cluster is needed, or --surroundings or --table");
    const std::string ending = ".xml_ph";
    if (options.output.size() <= ending.size() ||
        options.output.compare(options.output.size() - ending.size(), ending.size(), ending) != 0)
        throw CLI::ValidationError("the output has to end in .xml_ph");
}

void Run(PhasesOptions& options) {
    CheckSource(options);
    options.request.energies_eV = Energies(options);
    PhaseShiftResult result = options.table.empty() ? FromPhysics(options) : FromTable(options);
    const std::string listing = PhaseShiftListing(result.rows);
    SavePhaseShifts(result.document, options.output);
    if (!options.list.empty()) WriteWholeFile(options.list, listing);
    std::printf("%s", listing.c_str());
    std::printf("wrote %s: %zu records\n", options.output.c_str(), result.document.records.size());
    std::fflush(stdout);
    for (const std::string& warning : result.warnings)
        std::fprintf(stderr, "qvre phases: warning: %s\n", warning.c_str());
}

}  // namespace

void AddPhasesCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("phases", "Calculates the phase shifts of the atoms of a cluster");
    const auto options = std::make_shared<PhasesOptions>();
    AddSourceOptions(*command, *options);
    AddEnergyOptions(*command, *options);
    AddPhysicsOptions(*command, *options);
    AddTableOptions(*command, *options);
    AddOutputOptions(*command, *options);
    command->footer(kFooter);
    command->callback([command, options] {
        if (command->count("--zero") > 0) options->request.zero_eV = options->zero_eV;
        Run(*options);
    });
}
