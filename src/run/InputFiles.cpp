#include "run/InputFiles.h"

#include <fmt/format.h>

#include <filesystem>

#include "foundation/FileReading.h"
#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/phases/EnergyList.h"
#include "prepare/thermal/Elements.h"

namespace qvre {

namespace {

Cluster Load(const std::string& clusterFile) {
    Cluster cluster;
    ZfLoadCluster(cluster, clusterFile);
    return cluster;
}

/// The emitter's species in its field, with the settings that its phase shifts have. Returns its element.
std::string SetField(EmissionRequest& request, PhaseShiftRequest crystal, const PhotoelectronEnergy& energy,
                     const std::string& clusterFile) {
    const Cluster cluster = Load(clusterFile);
    const ClusterAtom emitter = EmitterOf(cluster);
    const ScreeningTable atoms(ProgramFile("screening_dhfs.csv"));
    request.atom = atoms.Find(emitter.atom);
    request.kinetic_eV = KineticEnergyOf(energy, request.atom, request.level);
    crystal.species = SurroundingsInCluster(cluster);
    SetCrystalField(request, crystal, emitter.name, atoms);
    return emitter.atom;
}

}  // namespace

std::string CopyReadyFile(const std::string& path, const std::string& output) {
    WriteWholeFile(output, ReadWholeFile(path));
    return {};
}

std::string MakeClusterFile(const ClusterRequest& request, const std::string& output,
                            const std::string& sharesOutput) {
    const MadeCluster made = MakeCluster(request);
    XyzStyle style;
    std::string remarks;
    for (std::size_t i = 0; i < made.structures.size(); ++i) {
        const StructureSummary& structure = made.structures[i];
        style.titles.push_back(structure.title);
        remarks += fmt::format("{}, {} atoms, point symmetry {}\n", structure.title,
                               made.cluster.structures[i].atoms.size(), structure.symmetry.Name());
    }
    WriteCluster(made.cluster, output, style);
    SaveEmitterShares(SharesOf(made), sharesOutput);
    if (const std::string warning = ManyStructuresWarning(made.structures.size()); !warning.empty())
        remarks += "warning: " + warning + "\n";
    return remarks;
}

std::vector<EmitterShare> SharesOfReady(const std::string& path, const Cluster& cluster) {
    const std::string beside = EmitterSharesBeside(path);
    if (!std::filesystem::exists(beside)) return SharesOf(cluster);
    std::vector<EmitterShare> shares = LoadEmitterShares(beside);
    if (shares.size() != cluster.structures.size())
        throw ZfError(fmt::format("{} has {} rows for the {} structures of {}: make both anew, or remove it",
                                  beside, shares.size(), cluster.structures.size(), path));
    return shares;
}

std::string CopyReadyCluster(const std::string& path, const std::string& output,
                             const std::string& sharesOutput) {
    SaveEmitterShares(SharesOfReady(path, Load(path)), sharesOutput);
    return CopyReadyFile(path, output);
}

double KineticEnergyOf(const PhotoelectronEnergy& energy, const ScreenedAtom& atom, const CoreLevel& level) {
    if (energy.photon_eV == 0.0) return energy.kinetic_eV;
    const double binding =
        energy.binding_eV
            ? *energy.binding_eV
            : MeasuredBinding(BindingEnergies(ProgramFile("binding_energies.csv")), atom, level);
    return KineticEnergyInside(energy.photon_eV, binding, energy.fermi_eV);
}

std::string MakeWavesFile(const WavesRequest& request, const PhaseShiftRequest& crystal,
                          const std::string& clusterFile, const std::string& output) {
    EmissionRequest emission = request.emission;
    if (request.isotropic) {
        SaveEmittedWaves(IsotropicEmission(request.energy.kinetic_eV, emission.weight), output);
        return {};
    }
    const std::string element = SetField(emission, crystal, request.energy, clusterFile);
    const Emission result = CoreLevelEmission(emission);
    SaveEmittedWaves(result.waves, output);
    return fmt::format("{} {} at {} eV, asymmetry beta = {}\n", element, emission.level.Name(),
                       DoubleToText(emission.kinetic_eV), DoubleToText(result.channels.Beta()));
}

std::string MakePhaseShiftFile(const PhaseShiftRequest& request, const std::string& clusterFile,
                               const std::string& wavesFile, const std::string& output) {
    PhaseShiftRequest complete = request;
    complete.energies_eV = EnergiesOfWaves(wavesFile);
    complete.species = SurroundingsInCluster(Load(clusterFile));
    PhaseShiftResult result =
        CalculatePhaseShifts(complete, ScreeningTable(ProgramFile("screening_dhfs.csv")));
    SavePhaseShifts(result.document, output);
    std::string remarks = PhaseShiftListing(result.rows);
    for (const std::string& warning : result.warnings) remarks += "warning: " + warning + "\n";
    return remarks;
}

std::string MakeFluctuationFile(const VibrationRequest& request, const std::string& clusterFile,
                                const std::string& output) {
    VibrationRequest complete = request;
    complete.elements = ElementsOf(Load(clusterFile));
    SaveFluctuation(MakeFluctuation(complete, DebyeTable(ProgramFile("debye_temperatures.csv"))), output);
    return {};
}

}  // namespace qvre
