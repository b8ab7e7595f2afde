#include "run/InputFiles.h"

#include <fmt/format.h>

#include <filesystem>

#include "foundation/CommaTable.h"
#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/phases/EnergyList.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"

namespace qvre {

namespace {

constexpr const char* kMeanFreePathTitle = "mean free path (angstrom)";

Cluster Load(const std::string& clusterFile) {
    Cluster cluster;
    ZfLoadCluster(cluster, clusterFile);
    return cluster;
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
    remarks += made.remarks;
    if (const std::string warning = ManyStructuresWarning(made.structures.size(), request.allEmitters);
        !warning.empty())
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

std::string MakeUnitWaves(const WavesRequest& request, const PhaseShiftRequest& crystal,
                          const std::string& clusterFile, const std::string& wavesFile,
                          const std::string& dipoleFile) {
    const Cluster cluster = Load(clusterFile);
    const DipoleSource source = MakeDipoleSource(request, crystal, cluster);
    SaveEmittedWaves(UnitWaves(source), wavesFile);
    SaveDipoleSource(source, dipoleFile);
    return fmt::format("{} {} at {} eV, asymmetry beta = {}\n", EmitterOf(cluster).atom,
                       request.emission.level.Name(), DoubleToText(source.kinetic_eV),
                       DoubleToText(source.channels.Beta()));
}

std::string MakeIsotropicWaves(const WavesRequest& request, const std::string& output) {
    SaveEmittedWaves(IsotropicEmission(request.energy.kinetic_eV, request.emission.weight), output);
    return {};
}

std::string MakeWavesUnderLight(const std::string& dipoleFile, const std::vector<LightVector>& light,
                                const std::string& output) {
    SaveEmittedWaves(WavesUnder(LoadDipoleSource(dipoleFile), light), output);
    return {};
}

std::string MakePhaseShiftFile(const PhaseShiftRequest& request, const std::string& clusterFile,
                               const std::string& wavesFile, const std::string& output) {
    PhaseShiftResult result = MakePhaseShifts(request, Load(clusterFile), EnergiesOfWaves(wavesFile));
    SavePhaseShifts(result.document, output);
    std::string remarks = PhaseShiftListing(result.rows);
    for (const std::string& warning : result.warnings) remarks += "warning: " + warning + "\n";
    return remarks;
}

std::string MakeMeanFreePathFile(const LossesRequest& request, const std::string& clusterFile,
                                 const std::string& wavesFile, const std::string& output) {
    const double kinetic_eV = EnergiesOfWaves(wavesFile).front();
    const double energy_eV = kinetic_eV - request.fermi_eV;
    const SolidDensity solid =
        request.path.length_angstrom ? SolidDensity() : DensityFor(request, Load(clusterFile));
    const double length_angstrom = MeanFreePath_angstrom(request.path, solid, energy_eV);
    WriteWholeFile(output,
                   fmt::format("kinetic (eV),{}\n{},{}\n", kMeanFreePathTitle, kinetic_eV, length_angstrom));
    std::string text = "mean free path " + MeanFreePathText(request.path, solid, energy_eV) + "\n";
    if (const std::string warning = MeanFreePathWarning(request.path, energy_eV); !warning.empty())
        text += "warning: " + warning + "\n";
    return text;
}

double LoadMeanFreePath_m(const std::string& path) {
    const CommaTable table = CommaTable::Load(path);
    if (table.rows.empty()) throw ZfError(path + " has no row");
    return kAngstrom_m * StrictNumber(table.rows.front()[table.Column(kMeanFreePathTitle)], path);
}

std::string MakeFluctuationFile(const VibrationRequest& request, const std::string& clusterFile,
                                const std::string& output) {
    SaveFluctuation(MakeFluctuationOf(request, Load(clusterFile)), output);
    return {};
}

}  // namespace qvre
