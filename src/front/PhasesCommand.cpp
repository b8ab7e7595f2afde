#include <CLI/CLI.hpp>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/phases/EnergyList.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "prepare/phases/PhaseShiftTable.h"
#include "prepare/phases/PhaseShifts.h"

namespace qvre {

namespace {

constexpr const char* kFooter =
    R"(Phase shifts are calculated for every name of an atom in the cluster, at each energy, or taken from a
published table with --table.

Examples:
  qvre phases cluster.xml_cl --energy 560 -o phaseshift.xml_ph
  qvre phases cluster.xml_cl --waves emitter.xml_emt --exchange slater -o phaseshift.xml_ph
  qvre phases --cell examples/rutile.cif --energy 560 -o phaseshift.xml_ph
  qvre phases --table Cu.phs --format leed --name Cu --radius 1.276 --energy 100:500:50 -o Cu.xml_ph)";

const std::map<std::string, PhaseTableFormat> kFormats = {{"leed", PhaseTableFormat::kLeed},
                                                          {"blocks", PhaseTableFormat::kBlocks},
                                                          {"csv", PhaseTableFormat::kCsv}};

struct PhasesOptions {
    PhaseShiftRequest request;
    std::string cluster;
    std::string cell;
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
    std::string output;
    std::string list;
};

void AddSourceOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* cluster = command.add_option("CLUSTER", options.cluster,
                                              "Cluster file (.xml_cl, .xyz): its innermost atoms count");
    CLI::Option* plain = command
                             .add_option("--surroundings", options.surroundings,
                                         "Instead of a cluster: a list of the shells of neighbours of each "
                                         "species (docs/phase-shifts.md)")
                             ->excludes(cluster);
    CLI::Option* cell = command
                            .add_option("--cell", options.cell,
                                        "Instead of a cluster: the crystal itself, from a file: .cif, "
                                        ".mmcif, POSCAR or .vasp, .xyz or "
                                        ".extxyz with Lattice=\"...\", or .cell")
                            ->excludes(cluster)
                            ->excludes(plain);
    command.add_option("--table", options.table, "Instead of a cluster: a published table of phase shifts")
        ->excludes(cluster)
        ->excludes(plain)
        ->excludes(cell);
}

void AddEnergyOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* energy =
        command
            .add_option("--energy,--kinetic", options.energies,
                        "Kinetic energies above the muffin-tin zero, eV: 560, or 200:1500:100, or several "
                        "with commas")
            ->delimiter(',')
            ->allow_extra_args(false);
    command.add_option("--waves", options.waves, "Take the energies of an emitted-wave file, .xml_emt")
        ->excludes(energy);
}

void AddPhysicsOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* table = command.get_option("--table");
    AddExchange(command, options.request.exchange, "")->excludes(table);
    command
        .add_flag("--relativistic", options.relativistic,
                  "Mass-velocity and Darwin terms, for heavy elements")
        ->excludes(table);
    command
        .add_option(
            "--radius", options.radii,
            "Muffin-tin radius, angstrom: 1.276, or by name Ga=1.2,As=1.24; default: half the distance "
            "of the nearest neighbour")
        ->delimiter(',')
        ->allow_extra_args(false);
    AddZero(command, options.request.zero_eV, "")->excludes(table);
}

void AddTableOptions(CLI::App& command, PhasesOptions& options) {
    CLI::Option* table = command.get_option("--table");
    command
        .add_option("--format", options.choice.format,
                    "Format of --table: leed (default), blocks or csv (docs/phase-shifts.md)")
        ->transform(Enumerator(kFormats))
        ->option_text("NAME")
        ->needs(table);
    command.add_option("--block", options.choice.block, "Block of a table with blocks, from 1")
        ->capture_default_str()
        ->needs(table);
    command.add_option("--name", options.name, "Name of the atoms that a table is for")->needs(table);
    command.add_option("--element", options.element, "Their element; default: the name")->needs(table);
    command
        .add_flag("--linear", options.linear, "Interpolate a table by straight lines; default: cubic splines")
        ->needs(table);
}

void AddOutputOptions(CLI::App& command, PhasesOptions& options) {
    PhaseShiftLimits& limits = options.request.limits;
    command.add_option("--lmax", limits.lMax, "Largest l")->check(CLI::Range(0, 60))->capture_default_str();
    command.add_option("--cut", limits.cut_deg, "Phase shifts below this end the list, degrees")
        ->check(Between(0.0, 180.0))
        ->capture_default_str();
    command
        .add_option("--radial", options.request.radialPoints,
                    "Points of the tables of the wave inside the atom; 0: none")
        ->check(CLI::Range(0, 1000))
        ->capture_default_str()
        ->excludes(command.get_option("--table"));
    command
        .add_option("--label", options.request.crystal,
                    "Words on the crystal for the records, such as \"Cu a=3.61 A\"")
        ->excludes(command.get_option("--table"));
    command.add_option("--list", options.list, "Write the table that is shown to this file too");
    command.add_option("-o,--output", options.output, "Phase-shift file to write (.xml_ph)")->required();
}

std::vector<double> Energies(const PhasesOptions& options) {
    if (!options.waves.empty()) return EnergiesOfWaves(LoadWaveFile(options.waves));
    if (options.energies.empty()) throw CLI::ValidationError("energies are needed: --energy or --waves");
    return Usage("--energy", [&] { return ParseEnergies(options.energies); });
}

/// "1.276" stands under the empty name.
std::map<std::string, double> Radii(const PhasesOptions& options) {
    std::map<std::string, double> radii;
    for (const auto& [name, radius] : NamedNumbers("--radius", options.radii)) radii[name] = radius;
    return radii;
}

std::vector<AtomSurroundings> Species(const PhasesOptions& options) {
    if (!options.cell.empty()) return SurroundingsInCrystal(LoadCell(options.cell));
    if (!options.surroundings.empty()) return ReadSurroundings(options.surroundings);
    return SurroundingsInCluster(LoadClusterFile(options.cluster));
}

PhaseShiftResult FromPhysics(PhasesOptions& options) {
    PhaseShiftRequest& request = options.request;
    CheckSettings(request);
    request.species = Species(options);
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
    PhaseShiftList list{options.name, element, 0.0, {}, table.radius_angstrom, 0.0, options.table};
    for (const auto& [name, radius] : Radii(options)) {
        if (!name.empty() && name != options.name)
            throw CLI::ValidationError("--radius", name + " is not the name of the atoms, " + options.name);
        list.radius_angstrom = radius;
    }
    if (!(list.radius_angstrom > 0.0))
        throw ZfError("The table tells no muffin-tin radius: give it in angstrom with --radius");
    list.neighbour_angstrom = 2.0 * list.radius_angstrom;
    return PhaseShiftsOfTable(table, list, options.request.energies_eV, options.request.limits,
                              options.linear);
}

void CheckSource(const PhasesOptions& options) {
    if (options.cluster.empty() && options.cell.empty() && options.surroundings.empty() &&
        options.table.empty())
        throw CLI::ValidationError("a cluster is needed, or --cell, --surroundings or --table");
    CheckOutput(options.output, ".xml_ph");
    if (options.list == options.output) throw CLI::ValidationError("--list", "is the name of the output too");
}

void Run(PhasesOptions& options) {
    CheckSource(options);
    options.request.energies_eV = Energies(options);
    CheckDigits(options.request.energies_eV);
    PhaseShiftResult result = options.table.empty() ? FromPhysics(options) : FromTable(options);
    const std::string listing = PhaseShiftListing(result.rows);
    std::optional<ReplacedFile> list;  // appears only when the other file does
    if (!options.list.empty()) {
        list.emplace(options.list);
        list->WriteText(listing);
    }
    SavePhaseShifts(result.document, options.output);
    if (list) list->Commit();
    std::printf("%s: %s\n%s", options.output.c_str(),
                Counted(result.document.records.size(), "record").c_str(), listing.c_str());
    std::fflush(stdout);
    for (const std::string& warning : result.warnings)
        std::fprintf(stderr, "qvre phases: warning: %s\n", warning.c_str());
}

}  // namespace

void AddPhasesCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("phases", "Calculate the phase shifts of the atoms of a cluster");
    const auto options = std::make_shared<PhasesOptions>();
    AddSourceOptions(*command, *options);
    AddEnergyOptions(*command, *options);
    AddPhysicsOptions(*command, *options);
    AddTableOptions(*command, *options);
    AddOutputOptions(*command, *options);
    command->footer(kFooter);
    command->callback([options] { Run(*options); });
}

}  // namespace qvre
