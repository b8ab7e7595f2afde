#include "recipe/RecipePlan.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ProgramFile.h"
#include "foundation/ZfError.h"
#include "recipe/MethodChoice.h"
#include "recipe/RecipeCases.h"
#include "recipe/RecipeEnergies.h"
#include "recipe/RecipeInformation.h"
#include "recipe/RecipeInputs.h"
#include "recipe/RecipeParameters.h"
#include "recipe/RecipePictures.h"
#include "recipe/RecipeSettings.h"
#include "report/sphere/ImageSum.h"
#include "run/EnergyStages.h"
#include "run/Fingerprint.h"
#include "run/InputFiles.h"
#include "run/RunChecks.h"
#include "run/RunStages.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

using Sections = std::vector<std::string>;

// The sections on which the files of a calculation depend. Those without "light" do not depend on the light
// keys of the emission either: waves are scattered before any light combines them.
const Sections kCluster = {"cluster"};
const Sections kWaves = {"cluster", "phases", "emission"};
const Sections kWavesUnderLight = {"cluster", "phases", "emission", "light"};
const Sections kPhases = {"cluster", "emission", "phases"};
const Sections kFluctuation = {"cluster", "thermal"};
const Sections kScattering = {"cluster", "emission", "phases", "scattering"};
const Sections kFullScattering = {"cluster", "emission", "phases", "scattering", "thermal"};
const Sections kChecks = {"cluster", "emission", "phases", "scattering", "thermal", "image"};
const Sections kImages = {"cluster", "emission", "light", "phases", "scattering", "thermal", "image"};

const Sections kCompared = {"cluster",    "emission", "light", "phases",
                            "scattering", "thermal",  "image", "compare"};

/// Writes one file of the run and returns what the user should know of it, in lines.
using FileMaker = std::function<std::string(const std::string& output)>;

/// Writes a cluster and the table of its emitters.
using ClusterMaker = std::function<std::string(const std::string& output, const std::string& sharesOutput)>;

/// What becomes of the members of a series.
enum class SeriesResult { kSum, kApart, kAsymmetry };

}  // namespace

template <>
inline constexpr auto kWords<SeriesResult> = std::to_array<Word<SeriesResult>>(
    {{"sum", SeriesResult::kSum}, {"apart", SeriesResult::kApart}, {"asymmetry", SeriesResult::kAsymmetry}});

namespace {

/// The files of a calculation as far as they are planned, and what is to be done with them.
struct CasePlan {
    ScatteringRequest scattering;
    ImageRequest images;
    std::optional<CrystalCell> crystal;  ///< of a cluster that is made
    double fermi_eV = PhotoelectronEnergy().fermi_eV;
    double kinetic_eV = 0.0;  ///< of the waves; 0: several
    std::string choices;      ///< on which the scattering depends beside the settings of its sections
};

/// One of the files of a calculation.
struct FileKind {
    std::string step;
    std::string stem;
    std::string extension;
    Sections sections;
    std::string detail = {};  ///< on which it depends beside the sections
};

bool Contains(const Sections& sections, const std::string& section) {
    return std::find(sections.begin(), sections.end(), section) != sections.end();
}

/// "_layer3_300K": the values that tell the file of one calculation from those of the others.
std::string SuffixOf(const RecipeCase& one, const Sections& sections) {
    std::string suffix;
    for (const RecipeVariation& variation : one.variations)
        if (std::any_of(sections.begin(), sections.end(),
                        [&](const std::string& section) { return variation.sections.contains(section); }))
            suffix += "_" + variation.label;
    return suffix;
}

std::string LabelOf(const std::string& suffix) {
    return suffix.empty() ? suffix : suffix.substr(1);
}

/// Fingerprints of the tables that the program reads.
std::string ShippedTables() {
    std::string text;
    for (const char* name : {"AtomicWeight.txt", "binding_energies.csv", "debye_temperatures.csv",
                             "screening_dhfs.csv", "valence_electrons.csv"})
        text += FingerprintOfFile(ProgramFile(name)) + "\n";
    return text;
}

FileMaker Copy(const std::string& path) {
    return [path](const std::string& output) { return CopyReadyFile(path, output); };
}

/// Makes the plan of one recipe.
class Planner {
public:
    Planner(std::string recipePath, RecipeOptions options)
        : recipePath_(std::move(recipePath)),
          place_{fs::path(recipePath_).parent_path().string()},
          options_(std::move(options)) {}

    RunPlan Plan();

private:
    void AddGroup(const RecipeGroup& group);
    void CompareAsScanned(RunResult& result, const RecipeGroup& group);
    void AddPicture(const RunResult& result, const RecipePicture& picture);
    CasePlan AddCase(const RecipeCase& one);
    RunResult AddImages(const RecipeCase& one, const CasePlan& plan);
    void AddEnergies(const RecipeGroup& group);
    std::string CurvesSuffix(const RecipeCase& one) const;
    void AddEnergyCurves(const std::string& suffix, const std::vector<const RecipeCase*>& cases,
                         const std::vector<double>& scanned);
    RunStep EnergyPoint(const RecipeCase& one, const CasePlan& plan) const;
    ClusterFacts AddCluster(const RecipeCase& one, CasePlan& plan);
    void AddClusterFiles(const RecipeCase& one, const std::string& extension, const ClusterMaker& maker,
                         CasePlan& plan);
    void AddWaves(const RecipeCase& one, const PhaseShiftRequest& crystal, const ClusterFacts& facts,
                  CasePlan& plan);
    void AddUnitWaves(const RecipeCase& one, const WavesRequest& request, const PhaseShiftRequest& crystal,
                      CasePlan& plan);
    void AddWavesAndPhases(const RecipeCase& one, const ClusterFacts& facts, CasePlan& plan);
    void AddLosses(const RecipeCase& one, const std::optional<MeanFreePathRequest>& losses, CasePlan& plan);
    std::string AddFluctuation(const RecipeCase& one, const ClusterFacts& facts,
                               const std::string& clusterFile, std::set<std::string>& displaced);
    std::string AddFile(const RecipeCase& one, const FileKind& kind, const FileMaker& maker);
    void AddAsymmetry(const std::vector<RunResult>& members);
    RunResult AddSum(const std::vector<RunResult>& members, const RecipeGroup& group);
    void AddStep(RunStep step);
    bool Claim(const std::string& output, const std::string& key);
    void ClaimComparison();
    void CheckRefraction(const RecipeCase& one) const;
    std::string InFolder(const std::string& name) const { return options_.folder + "/" + name; }
    std::string KeyOf(const RecipeCase& one, const std::string& name, const Sections& sections) const;
    void ReadGeneral(const RecipeCase& one);
    bool ReadComparison(const RecipeTable& section);
    std::string NothingCompared(bool hasSettings) const;

    std::string recipePath_;
    RecipeFolder place_;
    RecipeOptions options_;
    std::string tables_ = ShippedTables();        // part of every key
    std::map<std::string, std::string> writers_;  // key of the step that writes a file, by its name
    ScatteringMethod method_ = kMulti;
    SeriesResult series_ = SeriesResult::kSum;
    bool areStepsNoted_ = false;  // those of a further energy, which are like those of the first
    std::vector<RecipePicture> pictures_;
    std::optional<RecipeEnergies> energies_;
    RunPlan plan_;
};

RunPlan Planner::Plan() {
    const std::string text = ReadRecipe(recipePath_);
    const std::vector<RecipeGroup> groups =
        ExpandRecipe({text, recipePath_, options_.parameters, options_.dataSet});
    plan_.origin = "recipe " + recipePath_ + "\n" + text;
    plan_.folder = options_.folder;
    for (const RecipeVariation& variation : groups.front().cases.front().variations)
        if (variation.isScanned) plan_.scanned.push_back({variation.Name(), variation.unit});
    ReadGeneral(groups.front().cases.front());
    const MethodChoice choice = ChooseMethod(groups, place_);
    method_ = choice.method;
    if (!choice.remark.empty()) plan_.remarks = choice.remark + "\n" + plan_.remarks;
    for (const RecipeGroup& group : groups)
        if (energies_)
            AddEnergies(group);
        else
            AddGroup(group);
    ClaimComparison();
    CheckRefraction(groups.front().cases.front());
    for (const RunResult& result : plan_.results)
        for (const RecipePicture& picture : pictures_) AddPicture(result, picture);
    return std::move(plan_);
}

void Planner::ReadGeneral(const RecipeCase& one) {
    RecipeTable recipe(&one.settings, "recipe");
    plan_.title = recipe.Text("title", fs::path(recipePath_).stem().string());
    series_ = recipe.Word("series", SeriesResult::kSum);
    energies_ = ReadEnergies(recipe);
    for (const char* section : {"energies", "fit", "parameters", "scan"}) recipe.Has(section);
    const RecipeTable compare = recipe.Section("compare");
    if (!ReadComparison(compare)) plan_.remarks = NothingCompared(compare.Exists());
    for (const char* section : {"cluster", "emission", "light", "phases", "thermal", "scattering", "image"})
        recipe.Section(section);
    pictures_ = ReadPictures(recipe);
    recipe.RefuseUnread();
}

/// Whether there is anything to compare with.
bool Planner::ReadComparison(const RecipeTable& section) {
    if (energies_) {
        EnergyCompareSection compare = ReadEnergyCompare(section, *energies_, place_, options_.measuredFile);
        plan_.measuredEnergies = std::move(compare.measured);
        return !plan_.measuredEnergies.empty();
    }
    plan_.comparison = ReadCompareSection(section, place_, options_.measuredFile);
    return !plan_.comparison.request.measured.empty();
}

/// A section or a scan without a measurement does less than its writer may expect.
std::string Planner::NothingCompared(bool hasSettings) const {
    if (hasSettings)
        return "note: [compare] names no measured pattern, nor does the command: nothing is compared";
    if (!plan_.scanned.empty())
        return "note: a scan without a measured pattern tells no reliability factors: give [compare] "
               "measured, or the command a file to compare with";
    return {};
}

void Planner::AddGroup(const RecipeGroup& group) {
    std::vector<RunResult> members;
    for (const RecipeCase& one : group.cases) members.push_back(AddImages(one, AddCase(one)));
    if (series_ == SeriesResult::kAsymmetry) AddAsymmetry(members);
    if (members.size() > 1 && series_ == SeriesResult::kSum) members = {AddSum(members, group)};
    for (RunResult& result : members) {
        result.scanned = group.scanned;
        CompareAsScanned(result, group);
        plan_.results.push_back(std::move(result));
    }
}

/// A scan of how results are compared gives each comparison its settings.
void Planner::CompareAsScanned(RunResult& result, const RecipeGroup& group) {
    const RecipeCase& one = group.cases.front();
    if (SuffixOf(one, {"compare"}).empty()) return;
    RecipeTable recipe(&one.settings, "recipe");
    result.comparison = ReadCompareSection(recipe.Section("compare"), place_, options_.measuredFile).request;
}

/// The settings as text, with the content of the files that they name.
std::string Planner::KeyOf(const RecipeCase& one, const std::string& name, const Sections& sections) const {
    std::ostringstream text;
    text << QVRE_VERSION << '\n' << tables_ << name << '\n';
    for (const std::string& section : sections) {
        const toml::table* table = one.settings[section].as_table();
        if (!table) continue;
        toml::table content = *table;
        if (!Contains(sections, "light"))
            for (const char* key : kLightKeys) content.erase(key);
        text << section << '\n' << content << '\n';
        for (const std::string& used : NamesUsed(content, place_.folder))
            if (const auto value = one.settings["parameters"][used].value<double>())
                text << fmt::format("{} = {}\n", used, *value);
        for (const char* key : {"file", "cell"}) {
            const auto file = (*table)[key].value<std::string>();
            if (!file) continue;
            text << FingerprintOfFile(place_.Path(*file)) << '\n';
            const std::string shares = EmitterSharesBeside(place_.Path(*file));
            if (fs::exists(shares)) text << FingerprintOfFile(shares) << '\n';
        }
    }
    return FingerprintOf(text.str());
}

void Planner::AddStep(RunStep step) {
    bool isNew = true;
    for (const std::string& output : step.outputs) isNew = Claim(output, step.key);
    step.isOneOfMany = areStepsNoted_;
    if (isNew) plan_.steps.push_back(std::move(step));
}

/// Whether nothing writes the file yet. Nothing but the step with this key may.
bool Planner::Claim(const std::string& output, const std::string& key) {
    const auto [writer, isNew] = writers_.emplace(output, key);
    if (writer->second != key)
        throw ZfError(
            "The recipe would write " + output +
            " twice, with different settings: the values of a series have to differ in their first 6 "
            "digits, and the files in their names");
    return isNew;
}

void Planner::ClaimComparison() {
    for (const std::string& name : ComparisonOutputs(plan_)) Claim(name, "comparison " + name);
}

/// Refraction needs one energy, and an inner potential below it.
void Planner::CheckRefraction(const RecipeCase& one) const {
    const Instrument& instrument = plan_.comparison.request.instrument;
    if (!instrument.innerPotential || instrument.energy > 0.0) return;
    const RecipeTable section = RecipeTable(&one.settings, "recipe").Section("compare");
    for (const RunResult& result : plan_.results) {
        if (result.kinetic_eV == 0.0)
            section.Fail("inner-potential",
                         "refracts one energy, and the calculation has several: give energy");
        qvre::CheckRefraction(section, instrument, result.kinetic_eV);
    }
}

/// Adds the step that makes one file of a case and returns the file's path.
std::string Planner::AddFile(const RecipeCase& one, const FileKind& kind, const FileMaker& maker) {
    const std::string name = kind.stem + SuffixOf(one, kind.sections) + kind.extension;
    std::string path = InFolder(name);
    AddStep(
        {kind.step, KeyOf(one, kind.step + kind.detail, kind.sections), {name}, [=] { return maker(path); }});
    return path;
}

/// Adds the step that makes the cluster and the table of its emitters.
void Planner::AddClusterFiles(const RecipeCase& one, const std::string& extension, const ClusterMaker& maker,
                              CasePlan& plan) {
    const std::string suffix = SuffixOf(one, kCluster);
    const std::string cluster = "cluster" + suffix + extension;
    const std::string emitters = EmitterSharesBeside(cluster);
    plan.scattering.clusterFile = InFolder(cluster);
    plan.images.emergence.emittersFile = InFolder(emitters);
    AddStep({"cluster",
             KeyOf(one, "cluster", kCluster),
             {cluster, emitters},
             [maker, path = InFolder(cluster), emittersPath = InFolder(emitters)] {
                 return maker(path, emittersPath);
             }});
}

/// The part by which energies may differ for one refraction to serve them.
constexpr double kRefractedAlike = 0.01;

/// Of ready waves; 0 if they have several.
double CommonEnergy(const std::vector<EmittedWave>& waves) {
    const auto differs = [&](const EmittedWave& wave) {
        return !(std::abs(wave.Ek - waves.front().Ek) <= kRefractedAlike * waves.front().Ek);
    };
    return waves.empty() || std::any_of(waves.begin(), waves.end(), differs) ? 0.0 : waves.front().Ek;
}

ClusterFacts Planner::AddCluster(const RecipeCase& one, CasePlan& plan) {
    RecipeTable section = RecipeTable(&one.settings, "recipe").Section("cluster");
    if (const auto ready = ReadReadyFile(section, place_)) {
        const auto cluster = LoadReady<Cluster>(section, *ready, ZfLoadCluster);
        section.Made("file", [&] { return SharesOfReady(*ready, cluster); });
        AddClusterFiles(
            one, fs::path(*ready).extension().string(),
            [path = *ready](const std::string& output, const std::string& emittersOutput) {
                return CopyReadyCluster(path, output, emittersOutput);
            },
            plan);
        return section.Made("file", [&] { return FactsOf(cluster); });
    }
    const ClusterRequest request = ReadClusterRequest(section, place_);
    plan.crystal = request.cell;
    AddClusterFiles(
        one, ".xyz",
        [request](const std::string& output, const std::string& emittersOutput) {
            return MakeClusterFile(request, output, emittersOutput);
        },
        plan);
    return FactsOf(request);
}

void Planner::AddWaves(const RecipeCase& one, const PhaseShiftRequest& crystal, const ClusterFacts& facts,
                       CasePlan& plan) {
    const RecipeTable recipe(&one.settings, "recipe");
    RecipeTable section = RecipeTable(recipe).Section("emission");
    const FileKind kind = {"emission", "emitter", ".xml_emt", kWaves};
    if (const auto ready = ReadReadyFile(section, place_)) {
        LoadReady<std::vector<EmittedWave>>(section, *ready, ZfLoadEmittedWave);
        RefuseLight(recipe, "a ready file of waves");
        plan.kinetic_eV =
            CommonEnergy(LoadReady<std::vector<EmittedWave>>(section, *ready, ZfLoadEmittedWave));
        plan.scattering.wavesFile = AddFile(one, kind, Copy(*ready));
        return;
    }
    const WavesRequest request = ReadWavesRequest(section, facts);
    plan.kinetic_eV = KineticEnergyOf(request, facts);
    if (!request.isotropic) {
        plan.images.emergence.light = {request.light, ReadLightFrame(recipe)};
        plan.fermi_eV = request.energy.fermi_eV;
        AddUnitWaves(one, request, crystal, plan);
        return;
    }
    RefuseLight(recipe, "an isotropic source");
    plan.scattering.wavesFile = AddFile(
        one, kind, [request](const std::string& output) { return MakeIsotropicWaves(request, output); });
}

/// Light that stays with the sample makes emitted waves as well, for whoever goes on with the folder's files.
void Planner::AddUnitWaves(const RecipeCase& one, const WavesRequest& request,
                           const PhaseShiftRequest& crystal, CasePlan& plan) {
    const std::string suffix = SuffixOf(one, kWaves);
    const std::string waves = "unit_waves" + suffix + ".xml_emt";
    const std::string dipole = "dipole" + suffix + ".csv";
    plan.scattering.wavesFile = InFolder(waves);
    plan.images.emergence.dipoleFile = InFolder(dipole);
    AddStep({"emission",
             KeyOf(one, "emission", kWaves),
             {waves, dipole},
             [request, crystal, cluster = plan.scattering.clusterFile, wavesPath = InFolder(waves),
              dipolePath = InFolder(dipole)] {
                 return MakeUnitWaves(request, crystal, cluster, wavesPath, dipolePath);
             }});
    const Light& light = plan.images.emergence.light;
    if (light.frame != LightFrame::kSample) return;
    AddFile(one, {"light", "emitter", ".xml_emt", kWavesUnderLight},
            [parts = light.parts, dipolePath = InFolder(dipole)](const std::string& output) {
                return MakeWavesUnderLight(dipolePath, parts, output);
            });
}

/// The waves follow the settings of the phase shifts; those of a ready file are not known and stay the usual
/// ones.
void Planner::AddWavesAndPhases(const RecipeCase& one, const ClusterFacts& facts, CasePlan& plan) {
    RecipeTable section = RecipeTable(&one.settings, "recipe").Section("phases");
    const FileKind kind = {"phases", "phaseshift", ".xml_ph", kPhases};
    ScatteringRequest& files = plan.scattering;
    if (const auto ready = ReadReadyFile(section, place_)) {
        LoadReady<ZfPhaseShiftDocument>(section, *ready, ZfLoadPhaseShift);
        AddWaves(one, {}, facts, plan);
        files.phaseShiftFile = AddFile(one, kind, Copy(*ready));
        return;
    }
    const PhaseShiftRequest request = ReadPhaseShiftRequest(section, facts);
    AddWaves(one, request, facts, plan);
    files.phaseShiftFile =
        AddFile(one, kind,
                [request, cluster = files.clusterFile, waves = files.wavesFile](const std::string& output) {
                    return MakePhaseShiftFile(request, cluster, waves, output);
                });
}

std::string Planner::AddFluctuation(const RecipeCase& one, const ClusterFacts& facts,
                                    const std::string& clusterFile, std::set<std::string>& displaced) {
    RecipeTable section = RecipeTable(&one.settings, "recipe").Section("thermal");
    FileMaker maker;
    if (const auto ready = ReadReadyFile(section, place_)) {
        LoadReady<Fluctuation>(section, *ready, ZfLoadFluctuation);
        maker = Copy(*ready);
    } else {
        const VibrationRequest request = ReadVibrationRequest(section, facts);
        for (const auto& [element, uiso] : request.uiso_angstrom2) displaced.insert(element);
        maker = [request, clusterFile](const std::string& output) {
            return MakeFluctuationFile(request, clusterFile, output);
        };
    }
    return AddFile(one, {"thermal", "fluctuation", ".xml_flu", kFluctuation}, maker);
}

/// FULL damps the waves on their way between the atoms; all other losses belong to the image.
void Planner::AddLosses(const RecipeCase& one, const std::optional<MeanFreePathRequest>& losses,
                        CasePlan& plan) {
    if (!losses) return;
    ScatteringRequest& scattering = plan.scattering;
    const std::string settings =
        losses->length_angstrom ? fmt::format("imfp {}", *losses->length_angstrom)
                                : fmt::format("{} gap {} fermi {}", kTpp2m, losses->gap_eV, plan.fermi_eV);
    plan.images.emergence.meanFreePathFile =
        AddFile(one, {"losses", "mean_free_path", ".csv", kWaves, settings},
                [request = LossesRequest{*losses, plan.crystal, plan.fermi_eV},
                 cluster = scattering.clusterFile, waves = scattering.wavesFile](const std::string& output) {
                    return MakeMeanFreePathFile(request, cluster, waves, output);
                });
    if (scattering.method != kFull) return;
    scattering.meanFreePathFile = plan.images.emergence.meanFreePathFile;
    plan.choices += settings;
}

/// Adds the steps up to the scattered waves.
CasePlan Planner::AddCase(const RecipeCase& one) {
    RecipeTable recipe(&one.settings, "recipe");
    CasePlan plan;
    plan.scattering = ReadScatteringSection(recipe.Section("scattering")).request;
    plan.scattering.method = method_;
    plan.choices = WordFor(method_);
    const ImageSection image = ReadImageSection(recipe.Section("image"));
    plan.images = image.request;
    if (plan.scattering.method == kFull && plan.images.emergence.meanFreePath > 0.0)
        recipe.Section("image").Fail("mean-free-path", "is for the other methods: with FULL give imfp");
    const ClusterFacts facts = AddCluster(one, plan);
    AddWavesAndPhases(one, facts, plan);
    AddLosses(one, image.losses, plan);
    ScatteringRequest& scattering = plan.scattering;
    EmergenceRequest& emergence = plan.images.emergence;
    const std::string weights = ProgramFile("AtomicWeight.txt");
    std::set<std::string> displaced;
    const std::string fluctuation = AddFluctuation(one, facts, scattering.clusterFile, displaced);
    AddFile(one, {"checks", "checks", ".txt", kChecks, plan.choices}, [=](const std::string& output) {
        return CheckRun(scattering, fluctuation, weights, displaced, output);
    });
    scattering.fluctuationFile = emergence.fluctuationFile = fluctuation;
    scattering.atomicWeightFile = emergence.atomicWeightFile = weights;
    const Sections& sections = scattering.method == kFull ? kFullScattering : kScattering;
    emergence.scatteredWaveFile =
        AddFile(one, {"scattering", "scatteredwave", ".xml_sf", sections, plan.choices},
                [=](const std::string& output) { return CalculateScattering(scattering, output); });
    plan.images.information = InformationOf(one.settings, scattering.method);
    return plan;
}

RunResult Planner::AddImages(const RecipeCase& one, const CasePlan& plan) {
    const std::string suffix = SuffixOf(one, kImages);
    RunResult result{LabelOf(SuffixOf(one, kCompared)), "pattern" + suffix + ".xml_img",
                     "i0" + suffix + ".xml_img", KeyOf(one, "images" + plan.choices, kImages)};
    result.kinetic_eV = plan.kinetic_eV;
    result.largestKinetic_eV = plan.kinetic_eV;
    result.imageLabel = LabelOf(suffix);
    result.clusters = {fs::path(plan.scattering.clusterFile).filename().string()};
    const std::string image = InFolder(result.image);
    const std::string directImage = InFolder(result.directImage);
    AddStep({"images", result.key, {result.image, result.directImage}, [=, request = plan.images] {
                 CalculateImages(request, image, directImage);
                 return std::string();
             }});
    return result;
}

RunResult Planner::AddSum(const std::vector<RunResult>& members, const RecipeGroup& group) {
    RecipeCase scanned;
    for (const RecipeVariation& variation : group.cases.front().variations)
        if (variation.isScanned) scanned.variations.push_back(variation);
    const std::string suffix = SuffixOf(scanned, kImages);
    std::string key;
    for (const RunResult& member : members) key += member.key;

    RunResult sum{LabelOf(SuffixOf(scanned, kCompared)), "pattern" + suffix + "_sum.xml_img",
                  "i0" + suffix + "_sum.xml_img", FingerprintOf(key)};
    const double kinetic_eV = members.front().kinetic_eV;
    const auto hasOther = [=](const RunResult& member) {
        return !(std::abs(member.kinetic_eV - kinetic_eV) <= kRefractedAlike * kinetic_eV);
    };
    sum.kinetic_eV = std::any_of(members.begin(), members.end(), hasOther) ? 0.0 : kinetic_eV;
    sum.imageLabel = LabelOf(suffix);
    std::vector<WeightedImage> images;
    std::vector<WeightedImage> directImages;
    for (const RunResult& member : members) {
        sum.largestKinetic_eV = std::max(sum.largestKinetic_eV, member.kinetic_eV);
        sum.clusters.insert(sum.clusters.end(), member.clusters.begin(), member.clusters.end());
        images.push_back({InFolder(member.image)});
        directImages.push_back({InFolder(member.directImage)});
    }
    const std::string image = InFolder(sum.image);
    const std::string directImage = InFolder(sum.directImage);
    AddStep({"sum", sum.key, {sum.image, sum.directImage}, [=] {
                 SumImages(images, image);
                 SumImages(directImages, directImage);
                 return std::string();
             }});
    return sum;
}

/// The asymmetry of two members as an image and a picture.
void Planner::AddAsymmetry(const std::vector<RunResult>& members) {
    if (members.size() != 2 || !plan_.scanned.empty())
        throw ZfError(
            fmt::format("{}: series = \"asymmetry\" is that of two members, such as circular = [\"left\", "
                        "\"right\"], and "
                        "not of {}",
                        recipePath_, plan_.scanned.empty() ? std::to_string(members.size()) : "a scan"));
    const std::string key = FingerprintOf(members[0].key + members[1].key);
    const std::string image = InFolder("asymmetry.xml_img");
    AddStep({"asymmetry",
             key,
             {"asymmetry.xml_img"},
             [image, a = InFolder(members[0].image), b = InFolder(members[1].image)] {
                 return SaveAsymmetry(a, b, image);
             }});
    PatternPlot plot;
    plot.images = {image};
    plot.output = InFolder("asymmetry.png");
    plot.title = plan_.title + ", asymmetry";
    AddStep({"picture", FingerprintOf(key + plot.title), {"asymmetry.png"}, [plot] {
                 DrawPatternPlot(plot);
                 return std::string();
             }});
}

/// The members of the series at one energy add up; kept apart, each of them has its curves.
void Planner::AddEnergies(const RecipeGroup& group) {
    std::vector<std::string> suffixes;
    std::map<std::string, std::vector<const RecipeCase*>> cases;
    for (const RecipeCase& one : group.cases) {
        const std::string suffix = CurvesSuffix(one);
        if (!cases.contains(suffix)) suffixes.push_back(suffix);
        cases[suffix].push_back(&one);
    }
    for (const std::string& suffix : suffixes) AddEnergyCurves(suffix, cases[suffix], group.scanned);
}

/// The values that tell the curves of a case from others: not the energy, nor what is summed.
std::string Planner::CurvesSuffix(const RecipeCase& one) const {
    std::string suffix;
    for (const RecipeVariation& variation : one.variations) {
        const bool isEnergy = variation.section == "emission" && variation.key == energies_->Key();
        if (variation.isScanned || (series_ == SeriesResult::kApart && !isEnergy))
            suffix += "_" + variation.label;
    }
    return suffix;
}

RunStep Planner::EnergyPoint(const RecipeCase& one, const CasePlan& plan) const {
    const EnergyPointRequest request = {plan.images.emergence, plan.scattering.wavesFile,
                                        energies_->directions, energies_->innerPotential_eV};
    const std::string name = "intensity" + SuffixOf(one, kImages) + ".csv";
    return {"directions",
            KeyOf(one, "directions " + plan.choices + energies_->settings, kImages),
            {name},
            [request, path = InFolder(name)] {
                CalculateEnergyPoint(request, path);
                return std::string();
            }};
}

/// The cases stand by energy, those of one energy together.
void Planner::AddEnergyCurves(const std::string& suffix, const std::vector<const RecipeCase*>& cases,
                              const std::vector<double>& scanned) {
    const std::size_t members = cases.size() / energies_->values_eV.size();
    std::vector<EnergyTables> tables;
    std::string key = plan_.title + suffix + energies_->background.Text();
    for (std::size_t i = 0; i < cases.size(); ++i) {
        areStepsNoted_ = i >= members;
        const RunStep point = EnergyPoint(*cases[i], AddCase(*cases[i]));
        areStepsNoted_ = false;
        if (i % members == 0) tables.emplace_back();
        tables.back().files.push_back(InFolder(point.outputs.front()));
        if (energies_->byPhotons) tables.back().photon_eV = energies_->values_eV[i / members];
        key += point.key;
        AddStep(point);
    }
    EnergyResult result{suffix.empty() ? "" : suffix.substr(1), "energies" + suffix + ".csv", scanned};
    result.comparison = ReadEnergyCompare(RecipeTable(&cases.front()->settings, "recipe").Section("compare"),
                                          *energies_, place_, options_.measuredFile)
                            .settings;
    const std::string picture = "energies" + suffix + ".png";
    const EnergyCurvesOutput output = {
        InFolder(result.table), InFolder(picture),
        result.label.empty() ? plan_.title : plan_.title + ", " + result.label};
    AddStep({"energies", FingerprintOf(key), {result.table, picture}, [=, model = energies_->background] {
                 return CollectEnergies(tables, model, output);
             }});
    plan_.energyResults.push_back(std::move(result));
}

/// Several results have pictures of their own, with their labels in the names and titles.
void Planner::AddPicture(const RunResult& result, const RecipePicture& picture) {
    const std::string name = LabelledName(result.imageLabel, picture.plot.output);
    PatternPlot plot = PlotOf(picture, InFolder(result.image), InFolder(result.directImage), InFolder(name));
    Instrument& instrument = plot.instrument;
    if (instrument.innerPotential && instrument.energy == 0.0) {
        instrument.energy = result.kinetic_eV;
        if (!(*instrument.innerPotential < instrument.energy))
            throw ZfError(
                fmt::format("{}: [[picture]] {}: inner-potential has to be below the kinetic energy "
                            "inside, {}",
                            recipePath_, picture.plot.output,
                            instrument.energy > 0.0 ? fmt::format("{:g} eV", instrument.energy)
                                                    : "and there are several: give energy"));
    }
    if (plot.title.empty()) plot.title = plan_.title;
    if (!result.imageLabel.empty()) plot.title += ", " + result.imageLabel;
    AddStep({"picture", FingerprintOf(result.key + picture.settings + plot.title), {name}, [=] {
                 return fmt::format("{}", fmt::join(DrawPatternPlot(plot).leftOut, "\n"));
             }});
}

}  // namespace

RunPlan PlanRecipe(const std::string& recipePath, const RecipeOptions& options) {
    return Planner(recipePath, options).Plan();
}

}  // namespace qvre
