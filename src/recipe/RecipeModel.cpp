#include "recipe/RecipeModel.h"

#include "foundation/Constants.h"
#include "foundation/ProgramFile.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/emission/Emission.h"
#include "prepare/phases/EnergyList.h"
#include "prepare/thermal/AtomicWeights.h"
#include "recipe/RecipeSettings.h"
#include "recipe/RunDraft.h"

namespace qvre {

namespace {

// Without the light, as unit waves are emitted and scattered before any light combines them.
const Sections kEmitted = {"emission", "phases"};
const Sections kScattered = {"cluster", "emission", "phases", "scattering"};
const Sections kFullyScattered = {"cluster", "emission", "phases", "scattering", "thermal", "image"};

std::string SettingsText(const RecipeCase& one, const Sections& sections, const std::string& folder) {
    std::string text;
    for (const std::string& section : sections) text += SectionText(one, section, false, folder);
    return text;
}

}  // namespace

RecipeModel::RecipeModel(const RecipeCase& start, RecipeFolder place, ScatteringMethod method,
                         bool keepsPhases)
    : place_(std::move(place)),
      method_(method),
      keepsPhases_(keepsPhases),
      weights_(LoadAtomicWeights(ProgramFile("AtomicWeight.txt"))) {
    RecipeTable section = RecipeTable(&start.settings, "recipe").Section("cluster");
    if (!ReadReadyFile(section, place_)) {
        const ClusterRequest request = ReadClusterRequest(section, place_);
        selection_ = section.Made("", [&] { return SelectAtoms(request); });
    }
    start_ = ClusterOf(section);
}

RecipeModel::CutCluster RecipeModel::ClusterOf(RecipeTable section) const {
    CutCluster cut;
    if (const auto ready = ReadReadyFile(section, place_)) {
        cut.cluster = LoadReady<Cluster>(section, *ready, ZfLoadCluster);
        cut.emitters = section.Made("file", [&] { return SharesOfReady(*ready, cut.cluster); });
        cut.facts = section.Made("file", [&] { return FactsOf(cut.cluster); });
        return cut;
    }
    const ClusterRequest request = ReadClusterKeys(section, place_);
    MadeCluster made = section.Made("", [&] { return MakeCluster(request, *selection_); });
    cut.emitters = SharesOf(made);
    cut.cluster = std::move(made.cluster);
    cut.slab = std::move(made.slab);
    cut.facts = FactsOf(request);
    cut.crystal = request.cell;
    return cut;
}

RecipeModel::Emitted RecipeModel::MakeEmitted(const RecipeTable& recipe, const CutCluster& cluster) const {
    RecipeTable section = RecipeTable(recipe).Section("emission");
    Emitted emitted;
    if (const auto ready = ReadReadyFile(section, place_)) {
        RefuseLight(recipe, "a ready file of waves");
        emitted.waves = LoadReady<std::vector<EmittedWave>>(section, *ready, ZfLoadEmittedWave);
    } else if (WavesRequest request = ReadWavesRequest(section, cluster.facts); request.isotropic) {
        RefuseLight(recipe, "an isotropic source");
        emitted.waves = IsotropicEmission(request.energy.kinetic_eV, request.emission.weight);
    } else {
        RecipeTable phases = RecipeTable(recipe).Section("phases");
        const PhaseShiftRequest crystal = ReadReadyFile(phases, place_)
                                              ? PhaseShiftRequest()
                                              : ReadPhaseShiftRequest(phases, cluster.facts);
        request.energy.isRounded = false;
        emitted.source = MakeDipoleSource(request, crystal, cluster.cluster);
        emitted.waves = UnitWaves(*emitted.source);
    }
    emitted.kinetic_eV = EnergiesOfWaves(emitted.waves).front();
    return emitted;
}

ZfPhaseShiftDocument RecipeModel::MakePhases(const RecipeTable& recipe, const CutCluster& cluster,
                                             const Emitted& emitted) const {
    RecipeTable section = RecipeTable(recipe).Section("phases");
    if (const auto ready = ReadReadyFile(section, place_))
        return LoadReady<ZfPhaseShiftDocument>(section, *ready, ZfLoadPhaseShift);
    return MakePhaseShifts(ReadPhaseShiftRequest(section, cluster.facts), cluster.cluster,
                           EnergiesOfWaves(emitted.waves))
        .document;
}

Fluctuation RecipeModel::FluctuationOf(const RecipeTable& recipe, const CutCluster& cluster) const {
    RecipeTable section = RecipeTable(recipe).Section("thermal");
    if (const auto ready = ReadReadyFile(section, place_))
        return LoadReady<Fluctuation>(section, *ready, ZfLoadFluctuation);
    return MakeFluctuationOf(ReadVibrationRequest(section, cluster.facts), cluster.cluster);
}

/// 0 without losses.
double RecipeModel::MeanFreePath_m(const RecipeTable& recipe, const CutCluster& cluster,
                                   const Emitted& emitted) const {
    const std::optional<MeanFreePathRequest> path =
        ReadImageSection(RecipeTable(recipe).Section("image")).losses;
    if (!path) return 0.0;
    RecipeTable section = RecipeTable(recipe).Section("emission");
    double fermi_eV = PhotoelectronEnergy().fermi_eV;
    if (emitted.source) fermi_eV = ReadWavesRequest(section, cluster.facts).energy.fermi_eV;
    const SolidDensity solid = DensityFor({*path, cluster.crystal, fermi_eV}, cluster.cluster);
    return kAngstrom_m * MeanFreePath_angstrom(*path, solid, emitted.kinetic_eV - fermi_eV);
}

PreparedCase RecipeModel::Prepare(const RecipeCase& one) const {
    const RecipeTable recipe(&one.settings, "recipe");
    const auto section = [&recipe](const char* name) { return RecipeTable(recipe).Section(name); };
    const CutCluster cluster = ClusterOf(section("cluster"));
    const CutCluster& known = keepsPhases_ ? start_ : cluster;
    Sections atomic = kEmitted;
    if (!keepsPhases_) atomic.emplace_back("cluster");
    const std::string key = SettingsText(one, atomic, place_.folder);
    const auto emitted = emitted_.Get(key, [&] { return MakeEmitted(recipe, known); });

    PreparedCase prepared;
    prepared.kinetic_eV = emitted->kinetic_eV;
    prepared.surface = cluster.slab;
    prepared.scatteringKey =
        SettingsText(one, method_ == kFull ? kFullyScattered : kScattered, place_.folder);
    prepared.inputs.cluster = cluster.cluster;
    prepared.inputs.waves = emitted->waves;
    prepared.inputs.phaseShifts = *phases_.Get(key, [&] { return MakePhases(recipe, known, *emitted); });
    prepared.inputs.fluctuation = FluctuationOf(recipe, cluster);
    prepared.inputs.weights = weights_;
    prepared.method = {method_, ReadScatteringSection(section("scattering")).request.full};

    const ImageRequest image = ReadImageSection(section("image")).request;
    CountingRequest& counting = prepared.counting;
    counting.source = emitted->source;
    if (emitted->source)
        counting.light = {ReadWavesRequest(section("emission"), cluster.facts).light, ReadLightFrame(recipe)};
    counting.emitters = cluster.emitters;
    counting.inelasticMeanFreePath = MeanFreePath_m(recipe, cluster, *emitted);
    counting.arePathsDamped = method_ == kFull;
    counting.meanFreePath = image.emergence.meanFreePath;
    counting.limits = image.emergence.limits;
    if (method_ == kFull) prepared.method.full.meanFreePath = counting.inelasticMeanFreePath;
    return prepared;
}

CountedIntensity RecipeModel::Intensity(const PreparedCase& prepared,
                                        const FarFieldDirections& directions) const {
    const auto scattered = scattered_.Get(prepared.scatteringKey,
                                          [&] { return ScatterModel(prepared.inputs, prepared.method); });
    if (method_ == kFull) return CountModel(*scattered, directions, prepared.counting);
    return CountModel(WithVibrations(*scattered, prepared.inputs), directions, prepared.counting);
}

}  // namespace qvre
