#include <CLI/CLI.hpp>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "experiment/Light.h"
#include "files/AnyFile.h"
#include "files/FileSummary.h"
#include "foundation/Constants.h"
#include "foundation/ProgramFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/EmissionSummary.h"
#include "front/SharedOptions.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/emission/PhotonEnergy.h"
#include "prepare/phases/PhaseShiftFile.h"

namespace qvre {

namespace {

constexpr const char* kExample =
    "Examples, the first with a cluster that has its emitter at the origin:\n"
    "  qvre emit cluster.xml_cl --level 2p3/2 --photon Al --polarisation 0,0,1 -o emitter.xml_emt\n"
    "  qvre emit --free --element Cu --level 2p --kinetic 560 --unpolarised-along 1,0,1 -o emitter.xml_emt";

struct EmitOptions {
    std::string clusterFile;
    std::string surroundingsFile;
    std::string element;
    bool freeAtom = false;
    bool relativistic = false;
    PhaseShiftRequest crystal;  // exchange and zero of the emitter's field
    CoreField core = EmissionRequest().core;
    std::string level;
    bool isotropic = false;
    PhotoelectronEnergy energy;
    std::string photon;
    std::vector<double> polarisation;
    std::vector<double> unpolarisedAlong;
    std::optional<Handedness> circular;
    std::vector<double> along;
    std::vector<double> analyserAt;  // theta, phi
    double weight = EmissionRequest().weight;
    std::string output;
};

std::array<double, 3> DirectionOf(const std::vector<double>& d) {
    return {d.at(0), d.at(1), d.at(2)};
}

std::vector<LightVector> GivenLight(const EmitOptions& options) {
    if (!options.polarisation.empty()) return LinearLight(DirectionOf(options.polarisation));
    if (!options.unpolarisedAlong.empty()) return UnpolarisedLight(DirectionOf(options.unpolarisedAlong));
    return CircularLight(DirectionOf(options.along), *options.circular);
}

/// In the axes of the sample.
std::vector<LightVector> LightOf(const EmitOptions& options) {
    std::vector<LightVector> light = GivenLight(options);
    if (options.analyserAt.empty()) return light;
    const double theta = options.analyserAt.at(0) * kDegree;
    const double phi = options.analyserAt.at(1) * kDegree;
    const Vec3 k = {std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)};
    for (LightVector& part : light) part = InSample(part, LightFrame::kAnalyser, k);
    return light;
}

/// Below the Fermi level; of a free atom below the vacuum, calculated.
double BindingOf(const EmitOptions& options, const EmissionRequest& request) {
    if (options.energy.binding_eV) return *options.energy.binding_eV;
    if (options.freeAtom) return OrbitalBinding(request.atom, request.core, request.level);
    return MeasuredBinding(BindingEnergies(ProgramFile("binding_energies.csv")), request.atom, request.level);
}

/// Sets the energy and tells how it came about.
std::string SetEnergy(const EmitOptions& options, EmissionRequest& request) {
    request.kinetic_eV = options.energy.kinetic_eV;
    if (options.photon.empty()) return "";
    PhotoelectronEnergy energy = options.energy;
    energy.photon_eV = Usage("--photon", [&] { return ParsePhotonEnergy(options.photon); });
    CheckEnergy(energy);
    const double binding = BindingOf(options, request);
    const double fermi = options.freeAtom ? 0.0 : energy.fermi_eV;
    request.kinetic_eV = KineticEnergyInside(energy.photon_eV, binding, fermi);
    std::string text = "  energy           photon " + DoubleToText(energy.photon_eV) +
                       " eV - binding energy " + DoubleToText(binding) + " eV";
    if (!options.freeAtom) text += " + Fermi energy above the muffin-tin zero " + DoubleToText(fermi) + " eV";
    return text + "\n";
}

void RunIsotropic(const EmitOptions& options) {
    CheckDigits({options.energy.kinetic_eV});
    const auto waves = IsotropicEmission(options.energy.kinetic_eV, options.weight);
    SaveEmittedWaves(waves, options.output);
    std::printf("%s: isotropic source, 1 wave\n%s", options.output.c_str(), EnergyText(waves[0].Ek).c_str());
}

/// The species of a list of surroundings that the option names.
ClusterAtom EmitterOfList(const EmitOptions& options, const PhaseShiftRequest& crystal) {
    for (const AtomSurroundings& species : crystal.species)
        if (species.name == options.element) {
            ClusterAtom emitter;
            emitter.name = species.name;
            emitter.atom = species.element;
            return emitter;
        }
    throw ZfError(options.surroundingsFile + " has no species \"" + options.element + "\"");
}

ClusterAtom EmitterOfCluster(const EmitOptions& options, PhaseShiftRequest& crystal) {
    const Cluster cluster = LoadClusterFile(options.clusterFile);
    ClusterAtom emitter = EmitterOf(cluster);
    if (!options.element.empty() && options.element != emitter.atom)
        throw ZfError("The atom at the origin of the cluster is " + emitter.atom + ", not " +
                      options.element);
    if (!options.freeAtom) crystal.species = SurroundingsInCluster(cluster);
    return emitter;
}

/// Name and element of the emitter; sets what surrounds it in a crystal.
ClusterAtom FindEmitter(const EmitOptions& options, PhaseShiftRequest& crystal) {
    if (options.relativistic) crystal.equation = RadialEquation::kScalarRelativistic;
    if (!options.clusterFile.empty()) return EmitterOfCluster(options, crystal);
    if (!options.surroundingsFile.empty()) {
        crystal.species = ReadSurroundings(options.surroundingsFile);
        return EmitterOfList(options, crystal);
    }
    ClusterAtom free;
    free.atom = options.element;
    return free;
}

void RunLevel(const EmitOptions& options) {
    EmissionRequest request;
    request.level = Usage("--level", [&] { return ParseCoreLevel(options.level); });
    const std::vector<LightVector> light = Usage("the light", [&] { return LightOf(options); });
    request.weight = options.weight;
    request.core = options.core;
    PhaseShiftRequest crystal = options.crystal;
    const ClusterAtom emitter = FindEmitter(options, crystal);
    const ScreeningTable atoms(ProgramFile("screening_dhfs.csv"));
    request.atom = atoms.Find(emitter.atom);
    std::string origin = SetEnergy(options, request);
    CheckDigits({request.kinetic_eV});
    double zero_eV = 0.0;
    if (options.freeAtom) {
        SetFreeAtomField(request);
    } else {
        zero_eV = SetCrystalField(request, crystal, emitter.name, atoms);
        origin += ZeroText(zero_eV);
    }
    const Emission emission = CoreLevelEmission(request);
    const double photon_eV = options.photon.empty()
                                 ? request.kinetic_eV + zero_eV - emission.orbital.energy * kHartree_eV
                                 : ParsePhotonEnergy(options.photon);
    const std::vector<EmittedWave> waves = WavesUnder(emission.source, light);
    SaveEmittedWaves(waves, options.output);
    std::printf("%s: %s %s, %s\n%s%s%s%s", options.output.c_str(), request.atom.symbol.c_str(),
                request.level.Name().c_str(), Counted(waves.size(), "wave").c_str(), origin.c_str(),
                EnergyText(request.kinetic_eV).c_str(), ChannelText(emission).c_str(),
                CrossSectionText(request, photon_eV).c_str());
}

void Need(bool given, const char* what) {
    if (!given) throw CLI::RequiredError(what);
}

void Run(const EmitOptions& options) {
    CheckOutput(options.output, ".xml_emt");
    Need(options.energy.kinetic_eV > 0.0 || !options.photon.empty(), "--kinetic or --photon");
    if (options.isotropic) {
        Need(options.energy.kinetic_eV > 0.0, "--kinetic");
        return RunIsotropic(options);
    }
    Need(!options.level.empty(), "--level or --isotropic");
    Need(!options.polarisation.empty() || !options.unpolarisedAlong.empty() || options.circular.has_value(),
         "--polarisation, --unpolarised-along or --circular");
    Need(!options.clusterFile.empty() || !options.element.empty(), "A cluster, or --element");
    Need(!options.clusterFile.empty() || !options.surroundingsFile.empty() || options.freeAtom,
         "A cluster, --surroundings or --free");
    RunLevel(options);
}

/// x,y,z as one argument.
CLI::Option* AddDirection(CLI::App& command, const char* name, std::vector<double>& value, const char* text) {
    return command.add_option(name, value, text)->delimiter(',')->expected(3)->allow_extra_args(false);
}

void AddEnergyOptions(CLI::App& command, EmitOptions& options) {
    CLI::Option* kinetic = command.add_option(
        "--kinetic", options.energy.kinetic_eV,
        "Kinetic energy in eV inside the crystal, above the muffin-tin zero (free atom: above the vacuum)");
    kinetic->check(AboveZero())->type_name("FLOAT");
    CLI::Option* photon = command.add_option("--photon", options.photon,
                                             "Photon energy in eV, or Al (1486.6), Mg (1253.6), Ag (2984.3): "
                                             "the kinetic energy is photon - binding + "
                                             "Fermi energy, rounded to 0.1 eV");
    kinetic->excludes(photon);
    command
        .add_option(
            "--binding", options.energy.binding_eV,
            "Binding energy in eV below the Fermi level; by default from a table (X-ray Data Booklet), of "
            "a free atom the calculated orbital energy")
        ->check(AboveZero())
        ->type_name("FLOAT")
        ->needs(photon);
    command
        .add_option("--fermi", options.energy.fermi_eV,
                    "Fermi energy above the muffin-tin zero in eV; about 9 in Cu, 10 in GaAs, 12 in Si")
        ->check(Between(0.0, 1000.0))
        ->type_name("FLOAT")
        ->needs(photon)
        ->capture_default_str();
}

void AddLightOptions(CLI::App& command, EmitOptions& options) {
    CLI::Option* linear = AddDirection(command, "--polarisation", options.polarisation,
                                       "Linear light: direction x,y,z of its electric field");
    CLI::Option* unpolarised = AddDirection(command, "--unpolarised-along", options.unpolarisedAlong,
                                            "Unpolarised light: direction x,y,z in which it travels");
    CLI::Option* circular = command.add_option(
        "--circular", options.circular,
        "Circular light, left (helicity +1, anticlockwise for who looks into the light) or right");
    CLI::Option* along =
        AddDirection(command, "--along", options.along, "Direction x,y,z in which circular light travels");
    command
        .add_option("--analyser-at", options.analyserAt,
                    "Polar angle and azimuth, in degrees, of an analyser: the directions of the light are "
                    "along theta-hat, phi-hat and k-hat there")
        ->delimiter(',')
        ->expected(2)
        ->allow_extra_args(false);
    circular->transform(WordOf<Handedness>())->option_text("NAME")->needs(along);
    along->needs(circular);
    linear->excludes(unpolarised)->excludes(circular);
    unpolarised->excludes(circular);
}

void AddFieldOptions(CLI::App& command, EmitOptions& options, CLI::Option& free) {
    AddExchange(command, options.crystal.exchange, "; take that of the phase shifts")->excludes(&free);
    command
        .add_flag("--relativistic", options.relativistic,
                  "Mass-velocity and Darwin terms for the photoelectron, as in the phase shifts")
        ->excludes(&free);
    AddZero(command, options.crystal.zero_eV, "; take that of the phase shifts")->excludes(&free);
}

}  // namespace

void AddEmitCommand(CLI::App& program) {
    auto options = std::make_shared<EmitOptions>();
    CLI::App& command =
        *program.add_subcommand("emit", "Write an emitted-wave file: what light lifts from a core level");
    CLI::Option* cluster =
        command.add_option("CLUSTER", options->clusterFile,
                           "Cluster file (.xml_cl, .xyz): the emitter at its origin and what surrounds it");
    CLI::Option* list =
        command.add_option("--surroundings", options->surroundingsFile,
                           "In place of a cluster: the list of the shells of neighbours that the phase "
                           "shifts are made from; --element names the species");
    list->excludes(cluster);
    command.add_option("--element", options->element,
                       "Element of the emitter, such as Cu; by default the cluster's");
    CLI::Option* free =
        command.add_flag("--free", options->freeAtom, "A free atom in place of one in a crystal");
    free->excludes(list);
    AddFieldOptions(command, *options, *free);
    CLI::Option* level = command.add_option(
        "--level", options->level, "Core level, 1s to 4f; 2p for both lines of a pair, 2p3/2 for one");
    command
        .add_option(
            "--core", options->core,
            "Orbital of the level: self-consistent (scalar-relativistic) or analytical (the screening "
            "functions of the phase shifts, not relativistic)")
        ->transform(WordOf<CoreField>())
        ->option_text("NAME=" + WordFor(options->core))
        ->needs(level);
    AddEnergyOptions(command, *options);
    AddLightOptions(command, *options);
    command
        .add_flag("--isotropic", options->isotropic,
                  "One wave of l = 0 in place of a level, the source that the SINGLE method takes")
        ->excludes(level)
        ->excludes(free)
        ->excludes(command.get_option("--polarisation"))
        ->excludes(command.get_option("--unpolarised-along"))
        ->excludes(command.get_option("--circular"));
    command
        .add_option("--weight", options->weight,
                    "Weight of the emission: its intensity averages to it over all directions")
        ->check(AboveZero())
        ->type_name("FLOAT")
        ->capture_default_str();
    command.add_option("-o,--output", options->output, "Emitted-wave file to write (.xml_emt)")->required();
    command.footer(kExample);
    command.callback([options] { Run(*options); });
}

}  // namespace qvre
