#include "recipe/CaseFiles.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <set>
#include <utility>

#include "foundation/ProgramFile.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "recipe/RecipeInformation.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipeSettings.h"
#include "recipe/RecipeTable.h"
#include "run/InputFiles.h"
#include "run/RunChecks.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

const Sections kCluster = {"cluster"};
const Sections kWaves = {"cluster", "phases", "emission"};
const Sections kWavesUnderLight = {"cluster", "phases", "emission", "light"};
const Sections kPhases = {"cluster", "emission", "phases"};
const Sections kFluctuation = {"cluster", "thermal"};
const Sections kScattering = {"cluster", "emission", "phases", "scattering"};
const Sections kFullScattering = {"cluster", "emission", "phases", "scattering", "thermal"};
const Sections kChecks = {"cluster", "emission", "phases", "scattering", "thermal", "image"};

/// Writes one file of the run and returns what the user should know of it, in lines.
using FileMaker = std::function<std::string(const std::string& output)>;

/// Writes a cluster and the table of its emitters.
using ClusterMaker = std::function<std::string(const std::string& output, const std::string& sharesOutput)>;

/// One of the files of a calculation.
struct FileKind {
    std::string step;
    std::string stem;
    std::string extension;
    Sections sections;
    std::string detail = {};  ///< on which it depends beside the sections
};

FileMaker Copy(const std::string& path) {
    return [path](const std::string& output) { return CopyReadyFile(path, output); };
}

/// Plans the files of one case.
class CaseFiles {
public:
    CaseFiles(RunDraft& draft, const RecipeCase& one) : draft_(draft), one_(one) {}

    CasePlan Add();

private:
    std::string AddFile(const FileKind& kind, const FileMaker& maker);
    void AddClusterFiles(const std::string& extension, const ClusterMaker& maker);
    ClusterFacts AddCluster();
    void AddWaves(const PhaseShiftRequest& crystal, const ClusterFacts& facts);
    void AddUnitWaves(const WavesRequest& request, const PhaseShiftRequest& crystal);
    void AddWavesAndPhases(const ClusterFacts& facts);
    void AddLosses(const std::optional<MeanFreePathRequest>& losses);
    std::string AddFluctuation(const ClusterFacts& facts, std::set<std::string>& displaced);

    RunDraft& draft_;
    const RecipeCase& one_;
    CasePlan plan_;
};

/// Adds the step that makes one file of a case and returns the file's path.
std::string CaseFiles::AddFile(const FileKind& kind, const FileMaker& maker) {
    const std::string name = kind.stem + SuffixOf(one_, kind.sections) + kind.extension;
    std::string path = draft_.InFolder(name);
    draft_.Add({kind.step, draft_.KeyOf(one_, kind.step + kind.detail, kind.sections), {name}, [=] {
                    return maker(path);
                }});
    return path;
}

/// Adds the step that makes the cluster and the table of its emitters.
void CaseFiles::AddClusterFiles(const std::string& extension, const ClusterMaker& maker) {
    const std::string suffix = SuffixOf(one_, kCluster);
    const std::string cluster = "cluster" + suffix + extension;
    const std::string emitters = EmitterSharesBeside(cluster);
    plan_.scattering.clusterFile = draft_.InFolder(cluster);
    plan_.images.emergence.emittersFile = draft_.InFolder(emitters);
    draft_.Add({"cluster",
                draft_.KeyOf(one_, "cluster", kCluster),
                {cluster, emitters},
                [maker, path = draft_.InFolder(cluster), emittersPath = draft_.InFolder(emitters)] {
                    return maker(path, emittersPath);
                }});
}

ClusterFacts CaseFiles::AddCluster() {
    RecipeTable section = RecipeTable(&one_.settings, "recipe").Section("cluster");
    if (const auto ready = ReadReadyFile(section, draft_.place)) {
        const auto cluster = LoadReady<Cluster>(section, *ready, ZfLoadCluster);
        section.Made("file", [&] { return SharesOfReady(*ready, cluster); });
        AddClusterFiles(fs::path(*ready).extension().string(),
                        [path = *ready](const std::string& output, const std::string& emittersOutput) {
                            return CopyReadyCluster(path, output, emittersOutput);
                        });
        return section.Made("file", [&] { return FactsOf(cluster); });
    }
    const ClusterRequest request = ReadClusterRequest(section, draft_.place);
    plan_.crystal = request.cell;
    AddClusterFiles(".xyz", [request](const std::string& output, const std::string& emittersOutput) {
        return MakeClusterFile(request, output, emittersOutput);
    });
    return FactsOf(request);
}

void CaseFiles::AddWaves(const PhaseShiftRequest& crystal, const ClusterFacts& facts) {
    const RecipeTable recipe(&one_.settings, "recipe");
    RecipeTable section = RecipeTable(recipe).Section("emission");
    const FileKind kind = {"emission", "emitter", ".xml_emt", kWaves};
    if (const auto ready = ReadReadyFile(section, draft_.place)) {
        const auto waves = LoadReady<std::vector<EmittedWave>>(section, *ready, ZfLoadEmittedWave);
        RefuseLight(recipe, "a ready file of waves");
        std::vector<double> kinetic_eV;
        kinetic_eV.reserve(waves.size());
        for (const EmittedWave& wave : waves) kinetic_eV.push_back(wave.Ek);
        plan_.kinetic_eV = CommonEnergy(kinetic_eV);
        plan_.scattering.wavesFile = AddFile(kind, Copy(*ready));
        return;
    }
    const WavesRequest request = ReadWavesRequest(section, facts);
    plan_.kinetic_eV = KineticEnergyOf(request, facts);
    section.Made("kinetic", [&] { CheckDigits({plan_.kinetic_eV}); });
    if (!request.isotropic) {
        plan_.images.emergence.light = {request.light, ReadLightFrame(recipe)};
        plan_.fermi_eV = request.energy.fermi_eV;
        AddUnitWaves(request, crystal);
        return;
    }
    RefuseLight(recipe, "an isotropic source");
    plan_.scattering.wavesFile =
        AddFile(kind, [request](const std::string& output) { return MakeIsotropicWaves(request, output); });
}

/// Light that stays with the sample makes emitted waves as well, for whoever goes on with the folder's files.
void CaseFiles::AddUnitWaves(const WavesRequest& request, const PhaseShiftRequest& crystal) {
    const std::string suffix = SuffixOf(one_, kWaves);
    const std::string waves = "unit_waves" + suffix + ".xml_emt";
    const std::string dipole = "dipole" + suffix + ".csv";
    plan_.scattering.wavesFile = draft_.InFolder(waves);
    plan_.images.emergence.dipoleFile = draft_.InFolder(dipole);
    draft_.Add({"emission",
                draft_.KeyOf(one_, "emission", kWaves),
                {waves, dipole},
                [request, crystal, cluster = plan_.scattering.clusterFile, wavesPath = draft_.InFolder(waves),
                 dipolePath = draft_.InFolder(dipole)] {
                    return MakeUnitWaves(request, crystal, cluster, wavesPath, dipolePath);
                }});
    const Light& light = plan_.images.emergence.light;
    if (light.frame != LightFrame::kSample) return;
    AddFile({"light", "emitter", ".xml_emt", kWavesUnderLight},
            [parts = light.parts, dipolePath = draft_.InFolder(dipole)](const std::string& output) {
                return MakeWavesUnderLight(dipolePath, parts, output);
            });
}

/// The waves follow the settings of the phase shifts; those of a ready file are not known and stay the usual
/// ones.
void CaseFiles::AddWavesAndPhases(const ClusterFacts& facts) {
    RecipeTable section = RecipeTable(&one_.settings, "recipe").Section("phases");
    const FileKind kind = {"phases", "phaseshift", ".xml_ph", kPhases};
    ScatteringRequest& files = plan_.scattering;
    if (const auto ready = ReadReadyFile(section, draft_.place)) {
        LoadReady<ZfPhaseShiftDocument>(section, *ready, ZfLoadPhaseShift);
        AddWaves({}, facts);
        files.phaseShiftFile = AddFile(kind, Copy(*ready));
        return;
    }
    const PhaseShiftRequest request = ReadPhaseShiftRequest(section, facts);
    AddWaves(request, facts);
    files.phaseShiftFile = AddFile(
        kind, [request, cluster = files.clusterFile, waves = files.wavesFile](const std::string& output) {
            return MakePhaseShiftFile(request, cluster, waves, output);
        });
}

/// `displaced` takes the elements whose displacements the recipe tells.
std::string CaseFiles::AddFluctuation(const ClusterFacts& facts, std::set<std::string>& displaced) {
    RecipeTable section = RecipeTable(&one_.settings, "recipe").Section("thermal");
    FileMaker maker;
    if (const auto ready = ReadReadyFile(section, draft_.place)) {
        LoadReady<Fluctuation>(section, *ready, ZfLoadFluctuation);
        maker = Copy(*ready);
    } else {
        const VibrationRequest request = ReadVibrationRequest(section, facts);
        for (const auto& [element, uiso] : request.uiso_angstrom2) displaced.insert(element);
        maker = [request, clusterFile = plan_.scattering.clusterFile](const std::string& output) {
            return MakeFluctuationFile(request, clusterFile, output);
        };
    }
    return AddFile({"thermal", "fluctuation", ".xml_flu", kFluctuation}, maker);
}

/// FULL damps the waves on their way between the atoms; all other losses belong to the image.
void CaseFiles::AddLosses(const std::optional<MeanFreePathRequest>& losses) {
    if (!losses) return;
    ScatteringRequest& scattering = plan_.scattering;
    const std::string settings =
        losses->length_angstrom ? fmt::format("imfp {}", *losses->length_angstrom)
                                : fmt::format("{} gap {} fermi {}", kTpp2m, losses->gap_eV, plan_.fermi_eV);
    plan_.images.emergence.meanFreePathFile =
        AddFile({"losses", "mean_free_path", ".csv", kWaves, settings},
                [request = LossesRequest{*losses, plan_.crystal, plan_.fermi_eV},
                 cluster = scattering.clusterFile, waves = scattering.wavesFile](const std::string& output) {
                    return MakeMeanFreePathFile(request, cluster, waves, output);
                });
    if (scattering.method != kFull) return;
    scattering.meanFreePathFile = plan_.images.emergence.meanFreePathFile;
    plan_.choices += settings;
}

CasePlan CaseFiles::Add() {
    RecipeTable recipe(&one_.settings, "recipe");
    plan_.scattering = ReadScatteringSection(recipe.Section("scattering")).request;
    plan_.scattering.method = draft_.method;
    plan_.choices = WordFor(draft_.method);
    const ImageSection image = ReadImageSection(recipe.Section("image"));
    plan_.images = image.request;
    if (plan_.scattering.method == kFull && plan_.images.emergence.meanFreePath > 0.0)
        recipe.Section("image").Fail("mean-free-path", "is for the other methods: with FULL give imfp");
    const ClusterFacts facts = AddCluster();
    AddWavesAndPhases(facts);
    AddLosses(image.losses);
    ScatteringRequest& scattering = plan_.scattering;
    EmergenceRequest& emergence = plan_.images.emergence;
    const std::string weights = ProgramFile("AtomicWeight.txt");
    std::set<std::string> displaced;
    const std::string fluctuation = AddFluctuation(facts, displaced);
    AddFile({"checks", "checks", ".txt", kChecks, plan_.choices}, [=](const std::string& output) {
        return CheckRun(scattering, fluctuation, weights, displaced, output);
    });
    scattering.fluctuationFile = emergence.fluctuationFile = fluctuation;
    scattering.atomicWeightFile = emergence.atomicWeightFile = weights;
    const Sections& sections = scattering.method == kFull ? kFullScattering : kScattering;
    emergence.scatteredWaveFile =
        AddFile({"scattering", "scatteredwave", ".xml_sf", sections, plan_.choices},
                [=](const std::string& output) { return CalculateScattering(scattering, output); });
    plan_.images.information = InformationOf(one_.settings, scattering.method);
    return std::move(plan_);
}

}  // namespace

double CommonEnergy(const std::vector<double>& energies_eV) {
    constexpr double kRefractedAlike = 0.01;
    const auto differs = [&](double energy_eV) {
        return !(std::abs(energy_eV - energies_eV.front()) <= kRefractedAlike * energies_eV.front());
    };
    return energies_eV.empty() || std::any_of(energies_eV.begin(), energies_eV.end(), differs)
               ? 0.0
               : energies_eV.front();
}

CasePlan AddCaseFiles(RunDraft& draft, const RecipeCase& one) {
    return CaseFiles(draft, one).Add();
}

}  // namespace qvre
