#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "files/FileSummary.h"
#include "foundation/ProgramFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/SharedOptions.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/EmitterShares.h"
#include "prepare/cluster/Terminations.h"

namespace qvre {

namespace {

constexpr const char* kExample = R"(Examples:
  qvre cluster --preset Cu --layer 3 --atoms 200 -o cluster.xml_cl
  qvre cluster --preset zincblende --element Ga As --lattice 5.653 --emitter As --layer 5 \
      --debye Ga=360 As=360 --temperature 300 -o gaas001.xyz
The first cuts a hemisphere of Cu(001) around an emitter in the third layer; the second has
displacements. Atoms are taken in whole shells, so their number is the nearest possible one.)";

/// What the command line says beyond the request itself.
struct ClusterOptions {
    ClusterRequest request;
    std::vector<std::string> domains;
    std::vector<std::string> relax;
    std::vector<std::string> adsorbates;
    std::string preset;
    std::string cellFile;
    std::vector<std::string> elements;
    std::vector<double> lattice;
    std::vector<int> surface = {0, 0, 1};
    std::vector<std::string> debye;
    std::string emitters;
    bool listsTerminations = false;
    std::string output;
    std::string title;
    int decimals = 10;
};

void AddCrystalOptions(CLI::App& command, ClusterOptions& options) {
    CLI::Option* preset =
        command.add_option("--preset", options.preset, "Crystal or structure type: " + PresetNames());
    command.add_option("--element", options.elements, "Elements of a structure type, such as Ga As")
        ->delimiter(',')
        ->needs(preset);
    command
        .add_option("--lattice", options.lattice,
                    "Lattice constants of a structure type, angstrom: a, and c of hcp and wurtzite; by "
                    "default those of "
                    "an element that is of this type")
        ->expected(1, 2)
        ->delimiter(',')
        ->needs(preset);
    command
        .add_option(
            "--cell", options.cellFile,
            "Crystal from a file instead: .cif, .mmcif, POSCAR, CONTCAR or .vasp, .xyz or .extxyz with "
            "Lattice=\"...\", or .cell")
        ->excludes(preset);
    command.add_option("--surface", options.surface, "Miller indices h k l of the surface; default: 0 0 1")
        ->expected(3)
        ->delimiter(',')
        ->allow_extra_args(false);
    command
        .add_option("--azimuth", options.request.azimuth_deg,
                    "Turn of the crystal about the normal, degrees from x towards y")
        ->capture_default_str();
    command
        .add_option("--domains", options.domains,
                    "Further turns, degrees: one structure each; or symmetry: all orientations of a surface "
                    "structure that the substrate makes equal")
        ->delimiter(',')
        ->default_str("0")
        ->type_name("FLOAT");
}

/// What makes the surface differ from a crystal that is cut.
void AddSurfaceOptions(CLI::App& command, ClusterOptions& options) {
    command
        .add_option(
            "--relax", options.relax,
            "Spacings of the topmost layers, such as d12=-3%,d23=1.80 (percent of the bulk, or angstrom)")
        ->delimiter(',')
        ->type_name("KEY=SPACING");
    command
        .add_option(
            "--adsorbate", options.adsorbates,
            "Element or .xyz file, site (top, bridge, long-bridge, hollow, fcc, hcp, or fractions such "
            "as 0.5/0.5), height over the topmost layer in angstrom, superstructure: "
            "O,hollow,0.8,c(2x2)")
        ->type_name("NAME,SITE,HEIGHT[,CELL]");
}

/// All emitters below a surface, in place of single ones.
void AddTerminationOptions(CLI::App& command, ClusterOptions& options,
                           const std::vector<CLI::Option*>& ofSingleEmitters) {
    ClusterRequest& request = options.request;
    CLI::Option* emitters =
        command
            .add_option("--emitters", options.emitters,
                        "all: each atom of the element below one surface, down to --depth")
            ->check(CLI::IsMember({"all"}))
            ->option_text("all");
    for (CLI::Option* option : ofSingleEmitters) emitters->excludes(option);
    CLI::Option* depth =
        command
            .add_option("--depth", request.depth_angstrom,
                        "Depth of the deepest emitter below the top of the crystal, angstrom")
            ->option_text("FLOAT");
    command.add_option("--termination", request.termination,
                       "How the crystal ends: number of --list-terminations, or the elements of its topmost "
                       "layers, such as O or \"O / O Ti\"");
    emitters->needs(depth);
    depth->needs(emitters);
    command.add_option("--layer-tolerance", request.layerTolerance_angstrom,
                       "Planes that lie so close are one layer, angstrom; default 0.3 with --emitters all, "
                       "single planes otherwise");
    command.add_flag("--list-terminations", options.listsTerminations,
                     "Print how the crystal can end at the surface, and make no cluster");
}

void AddEmitterOptions(CLI::App& command, ClusterOptions& options) {
    ClusterRequest& request = options.request;
    command.add_option("--emitter", request.emitter,
                       "Element that emits; needed when the crystal holds several");
    CLI::Option* sites =
        command
            .add_option("--site", request.sites,
                        "Emitting atoms of the cell, from 1; default: all of the element that differ")
            ->delimiter(',');
    CLI::Option* layer =
        command
            .add_option("--layer,--emitter-layer", request.layers,
                        "Layers of the emitter, from 1 at the surface, over all atomic planes")
            ->delimiter(',')
            ->capture_default_str();
    CLI::Option* top = command.add_option("--top", request.top,
                                          "Only emitters below a surface plane that holds this element");
    AddTerminationOptions(command, options, {sites, layer, top});
}

void AddShapeOptions(CLI::App& command, ClusterOptions& options) {
    ClusterRequest& request = options.request;
    command
        .add_option("--shape", request.shape,
                    "hemisphere or paraboloid; default: hemisphere, with --emitters all paraboloid")
        ->transform(WordOf<ClusterShape>())
        ->option_text("NAME");
    CLI::Option* radius =
        command
            .add_option("--radius", request.size_angstrom,
                        "Radius around the surface point over the emitter, angstrom; of a paraboloid the "
                        "path emitter - atom - surface")
            ->check(AboveZero())
            ->type_name("FLOAT");
    command.add_option("--atoms", request.atoms, "Number of atoms wanted, instead of a radius")
        ->check(CLI::Range(2, kMostAtoms))
        ->capture_default_str()
        ->excludes(radius);
}

void AddOutputOptions(CLI::App& command, ClusterOptions& options) {
    command
        .add_option(
            "--debye", options.debye,
            "Debye temperatures, kelvin, such as Cu=343: displacements Uiso, in place of those of a file")
        ->delimiter(',');
    command.add_option("--temperature", options.request.temperature_K, "Temperature for --debye, kelvin")
        ->capture_default_str();
    command.add_option("--title", options.title, "Title of each structure in an .xyz file");
    command.add_option("--digits", options.decimals, "Decimals in an .xyz file")
        ->check(CLI::Range(1, 15))
        ->capture_default_str();
    command
        .add_option("-o,--output", options.output,
                    "Cluster file to write: .xml_cl (6 significant digits) or .xyz (Extended XYZ)")
        ->option_text("TEXT REQUIRED");
}

void CheckUsage(const ClusterOptions& options) {
    if (options.preset.empty() && options.cellFile.empty())
        throw CLI::ValidationError("a crystal is needed: --preset or --cell");
    if (options.listsTerminations) return;
    if (!options.request.termination.empty() && options.emitters.empty() && options.relax.empty() &&
        options.adsorbates.empty())
        throw CLI::RequiresError("--termination", "--emitters");
    if (options.output.empty()) throw CLI::RequiredError("--output");
    Usage("--output", [&] { CheckClusterExtension(options.output); });
    if (options.title.find_first_of("\r\n") != std::string::npos)
        throw CLI::ValidationError("--title", "has to be one line");
}

void ReadDebye(ClusterOptions& options) {
    for (const auto& [element, temperature_K] : DebyeTemperatures(options.debye))
        options.request.debye_K[element] = temperature_K;
    if (!options.debye.empty()) options.request.weightTable = ProgramFile("AtomicWeight.txt");
}

void PrintShells(const std::vector<NeighbourShell>& shells) {
    constexpr std::size_t kShown = 5;
    std::printf("  %zu shells around the emitter:", shells.size());
    for (std::size_t i = 0; i < shells.size() && i < kShown; ++i)
        std::printf("%s %d at %.3f", i > 0 ? "," : "", shells[i].atoms, shells[i].distance_angstrom);
    std::printf("%s angstrom\n", shells.size() > kShown ? ", ..." : "");
}

void PrintStructure(const StructureSummary& structure, std::size_t index, std::size_t atoms) {
    std::printf("structure %zu: %s\n", index, structure.title.c_str());
    std::printf("  %zu atoms, emitter %s (site %d), surface plane %s at z = %.4f angstrom\n", atoms,
                structure.emitter.c_str(), structure.site, structure.surfaceElements.c_str(),
                structure.surface_angstrom);
    if (structure.weight > 1) std::printf("  weight %d: so many equal emitters\n", structure.weight);
    PrintShells(structure.shells);
    std::printf("  nearest neighbour %s at %.4f angstrom, size %.3f angstrom\n",
                structure.nearestElement.c_str(), structure.shells.front().distance_angstrom,
                structure.size_angstrom);
    std::printf("  point symmetry %s about z", structure.symmetry.Name().c_str());
    if (structure.symmetry.mirror_deg)
        std::printf(", a mirror plane at azimuth %.4g degrees", *structure.symmetry.mirror_deg);
    std::printf("\n");
}

/// The table of the emitters, where there is more to tell than the one cluster.
void WriteShares(const MadeCluster& made, const ClusterOptions& options) {
    if (made.structures.size() == 1) return;
    const std::string path = EmitterSharesBeside(options.output);
    SaveEmitterShares(SharesOf(made), path);
    std::printf("%s: depth and weight of each emitter\n", path.c_str());
}

void Make(const ClusterOptions& options) {
    const MadeCluster made = MakeCluster(options.request);
    XyzStyle style;
    style.decimals = options.decimals;
    for (const StructureSummary& structure : made.structures)
        style.titles.push_back(options.title.empty() ? structure.title : options.title);
    WriteCluster(made.cluster, options.output, style);
    std::printf("%s: %s, %s displacements\n", options.output.c_str(),
                Counted(made.structures.size(), "structure").c_str(), made.hasUiso ? "with" : "without");
    WriteShares(made, options);
    for (std::size_t i = 0; i < made.structures.size(); ++i)
        PrintStructure(made.structures[i], i, made.cluster.structures[i].atoms.size());
    std::fputs(made.remarks.c_str(), stdout);
    std::fflush(stdout);
    const std::string warning = ManyStructuresWarning(made.structures.size(), options.request.allEmitters);
    if (!warning.empty()) std::fprintf(stderr, "qvre cluster: warning: %s\n", warning.c_str());
}

bool TakesAllDomains(const ClusterOptions& options) {
    return options.domains == std::vector<std::string>{"symmetry"};
}

void ReadDomains(ClusterOptions& options) {
    if (options.domains.empty() || TakesAllDomains(options)) return;
    options.request.domains.clear();
    Usage("--domains", [&] {
        for (const std::string& turn : options.domains)
            options.request.domains.push_back({StrictNumber(turn, "turn")});
    });
}

SurfaceStructure ReadStructure(const ClusterOptions& options) {
    SurfaceStructure structure;
    structure.takesAllDomains = TakesAllDomains(options);
    Usage("--relax", [&] {
        for (const std::string& spacing : options.relax) {
            const std::size_t equals = spacing.find('=');
            if (equals == std::string::npos)
                throw ZfError("\"" + spacing + "\" is no spacing of layers, such as d12=-3%");
            AddSpacing(spacing.substr(0, equals), ParseLayerSpacing(spacing.substr(equals + 1)),
                       structure.relaxation);
        }
    });
    Usage("--adsorbate", [&] {
        for (const std::string& adsorbate : options.adsorbates)
            structure.adsorbates.push_back(ParseAdsorbate(adsorbate));
    });
    return structure;
}

void Run(ClusterOptions& options) {
    CheckUsage(options);
    ReadDebye(options);
    options.request.surface = {options.surface[0], options.surface[1], options.surface[2]};
    options.request.allEmitters = !options.emitters.empty();
    options.request.cell = options.cellFile.empty()
                               ? PresetCell(options.preset, options.elements, options.lattice)
                               : LoadCell(options.cellFile);
    ReadDomains(options);
    if (options.listsTerminations)
        std::fputs(TerminationListing(options.request).c_str(), stdout);
    else {
        options.request.structure = ReadStructure(options);
        Make(options);
    }
}

}  // namespace

void AddClusterCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand("cluster", "Cut a cluster of atoms from a crystal");
    const auto options = std::make_shared<ClusterOptions>();
    AddCrystalOptions(*command, *options);
    AddSurfaceOptions(*command, *options);
    AddEmitterOptions(*command, *options);
    AddShapeOptions(*command, *options);
    AddOutputOptions(*command, *options);
    command->footer(kExample);
    command->callback([options] { Run(*options); });
}

}  // namespace qvre
