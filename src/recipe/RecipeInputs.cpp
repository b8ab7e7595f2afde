#include "recipe/RecipeInputs.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "foundation/FileReading.h"
#include "foundation/ProgramFile.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/EmitterSites.h"
#include "prepare/cluster/Terminations.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"
#include "recipe/RecipeSurface.h"

namespace qvre {

namespace {

std::vector<int> Integers(RecipeTable& section, const std::string& key) {
    std::vector<int> integers;
    for (const double number : section.Numbers(key, RecipeUnit::kNone)) {
        if (number != std::floor(number) || std::abs(number) > 1e6)
            section.Fail(key, "has to be a list of whole numbers");
        integers.push_back(static_cast<int>(number));
    }
    return integers;
}

/// A table of numbers by name, such as { Cu = 343 }.
std::map<std::string, double> NamedNumbers(RecipeTable& section, const std::string& key, RecipeUnit unit) {
    RecipeTable table = section.Section(key);
    std::map<std::string, double> numbers;
    for (const std::string& name : table.Keys()) {
        numbers[name] = *table.Number(name, unit);
        if (!(numbers[name] > 0.0)) table.Fail(name, "has to be above 0");
    }
    return numbers;
}

double Temperature(RecipeTable& section, double fallback) {
    const double temperature_K = section.Number("temperature", RecipeUnit::kKelvin, fallback);
    section.Made("temperature", [&] { CheckTemperature(temperature_K); });
    return temperature_K;
}

/// A number, or the elements of the topmost layers.
std::string TerminationName(RecipeTable& section) {
    if (!section.Has("termination")) return {};
    if (!section.HasWord("termination")) return std::to_string(*section.Integer("termination"));
    std::string name = section.Text("termination", "");
    if (name.empty()) section.Fail("termination", "has to be a number or the elements of the topmost layers");
    return name;
}

/// All emitters below a termination, in place of those of a layer, whose surface the emitter itself chooses.
void ReadTermination(RecipeTable& section, bool isBuilt, ClusterRequest& request) {
    request.layerTolerance_angstrom = section.Number("layer-tolerance", RecipeUnit::kAngstrom);
    section.Made("layer-tolerance", [&] { CheckLayerTolerance(request); });
    const std::optional<std::string> emitters = section.Text("emitters");
    if (emitters && *emitters != "all")
        section.Fail("emitters", "can only be \"all\"; the element that emits is named by emitter");
    request.allEmitters = emitters.has_value();
    request.termination = TerminationName(section);
    request.depth_angstrom = section.NotNegative("depth", RecipeUnit::kAngstrom, 0.0);
    if (request.allEmitters) {
        if (!section.Has("depth"))
            section.Fail("emitters",
                         "\"all\" needs depth, down to which atoms emit: three mean free paths hold 95 "
                         "percent of the signal");
        for (const char* key : {"emitter-layer", "sites", "top"})
            if (section.Has(key))
                section.Fail(key,
                             "is for emitters one by one; with emitters = \"all\" leave it out, as depth "
                             "and termination take its place");
        return;
    }
    for (const std::string key : {"depth", "termination"})
        if (section.Has(key) && !(isBuilt && key == "termination"))
            section.Fail(key, "is for all emitters below a surface: give emitters = \"all\" too");
}

CrystalCell ReadCell(RecipeTable& section, const RecipeFolder& place) {
    const std::string preset = section.Text("preset", "");
    const std::string cell = section.Text("cell", "");
    if (preset.empty() == cell.empty())
        section.Fail("preset", "give one of preset, cell (a crystal file) and file (a ready cluster)");
    if (!cell.empty())
        return section.Made("cell", [&] { return LoadCell(place.Path(cell), section.Parameters()); });
    const std::vector<std::string> elements = section.Texts("elements");
    const std::vector<double> lattice = section.Numbers("lattice", RecipeUnit::kAngstrom);
    return section.Made("preset", [&] { return PresetCell(preset, elements, lattice); });
}

std::vector<ClusterDomain> ReadTurns(RecipeTable& section) {
    std::vector<ClusterDomain> domains;
    for (const double turn : section.Numbers("domains", RecipeUnit::kDegree)) {
        if (std::any_of(domains.begin(), domains.end(),
                        [turn](const ClusterDomain& domain) { return domain.turn_deg == turn; }))
            section.Fail("domains", fmt::format("{:g} stands twice in the list", turn));
        domains.push_back({turn});
    }
    return domains;
}

}  // namespace

ClusterFacts FactsOf(const ClusterRequest& request) {
    std::vector<std::string> elements = request.cell.Elements();
    for (const Adsorbate& adsorbate : request.structure.adsorbates)
        for (const MoleculeAtom& atom : adsorbate.atoms)
            if (std::find(elements.begin(), elements.end(), atom.element) == elements.end())
                elements.push_back(atom.element);
    std::string emitter = request.emitter;
    if (emitter.empty() && !request.sites.empty())
        emitter = request.cell.atoms.at(static_cast<std::size_t>(request.sites.front()) - 1).element;
    return {elements, elements, emitter.empty() ? elements.front() : emitter};
}

ClusterFacts FactsOf(const Cluster& cluster) {
    std::set<std::string> names;
    for (const Structure& structure : cluster.structures)
        for (const ClusterAtom& atom : structure.atoms) names.insert(atom.name);
    return {{names.begin(), names.end()}, ElementsOf(cluster), EmitterOf(cluster).atom};
}

std::optional<std::string> ReadReadyFile(RecipeTable& section, const RecipeFolder& place) {
    const std::optional<std::string> name = section.Text("file");
    if (!name) return std::nullopt;
    section.RefuseUnread();
    const std::string path = place.Path(*name);
    section.Made("file", [&] { RequireFile(path); });
    return path;
}

ClusterRequest ReadClusterKeys(RecipeTable section, const RecipeFolder& place) {
    ClusterRequest request;
    request.cell = ReadCell(section, place);
    const std::vector<int> surface = Integers(section, "surface");
    if (!surface.empty() && surface.size() != 3) section.Fail("surface", "has to be a list h, k, l");
    if (!surface.empty()) request.surface = {surface[0], surface[1], surface[2]};
    request.azimuth_deg = section.Number("azimuth", RecipeUnit::kDegree, request.azimuth_deg);
    request.structure = ReadSurfaceStructure(section, place);
    if (section.Has("domains") && !request.structure.takesAllDomains) request.domains = ReadTurns(section);
    request.emitter = section.Text("emitter", "");
    request.sites = Integers(section, "sites");
    if (section.Has("emitter-layer")) request.layers = Integers(section, "emitter-layer");
    section.Made("emitter-layer", [&] {
        for (const int layer : request.layers) CheckLayer(layer);
    });
    request.top = section.Text("top", "");
    ReadTermination(section, !request.structure.IsEmpty(), request);
    request.shape = section.Word<ClusterShape>("shape");
    request.size_angstrom = section.NotNegative("radius", RecipeUnit::kAngstrom, request.size_angstrom);
    request.atoms = section.Count("atoms", request.atoms);
    if (section.Has("atoms") && section.Has("radius"))
        section.Fail("atoms", "give atoms or radius, not both");
    request.debye_K = NamedNumbers(section, "debye", RecipeUnit::kKelvin);
    request.temperature_K = Temperature(section, request.temperature_K);
    request.weightTable = ProgramFile("AtomicWeight.txt");
    section.RefuseUnread();
    return request;
}

ClusterRequest ReadClusterRequest(const RecipeTable& section, const RecipeFolder& place) {
    ClusterRequest request = ReadClusterKeys(section, place);
    section.Check([&] { CheckClusterRequest(request); });
    return request;
}

PhaseShiftRequest ReadPhaseShiftRequest(RecipeTable section, const ClusterFacts& cluster) {
    PhaseShiftRequest request;
    request.exchange = section.Word("exchange", request.exchange);
    if (section.Flag("relativistic", false)) request.equation = RadialEquation::kScalarRelativistic;
    request.radius_angstrom = NamedNumbers(section, "radius", RecipeUnit::kAngstrom);
    request.zero_eV = section.Number("zero", RecipeUnit::kElectronVolt);
    request.limits.lMax = section.Count("lmax", request.limits.lMax);
    request.limits.cut_deg = section.Number("cut", RecipeUnit::kDegree, request.limits.cut_deg);
    section.RefuseUnread();
    section.Check([&] { CheckSettings(request); });
    for (const auto& [name, radius] : request.radius_angstrom)
        if (std::find(cluster.names.begin(), cluster.names.end(), name) == cluster.names.end())
            section.Fail("radius", fmt::format("there are no atoms of the name {}; the names are {}", name,
                                               fmt::join(cluster.names, ", ")));
    const ScreeningTable atoms(ProgramFile("screening_dhfs.csv"));
    section.Check([&] {
        for (const std::string& element : cluster.elements) atoms.Find(element);
    });
    return request;
}

std::optional<MeanFreePathRequest> ReadMeanFreePath(RecipeTable& section) {
    if (!section.Has("imfp")) {
        if (section.Has("gap")) section.Fail("gap", R"(is a setting of imfp = "TPP-2M")");
        return std::nullopt;
    }
    MeanFreePathRequest request;
    const std::string word = section.HasWord("imfp") ? *section.Text("imfp") : "";
    if (section.HasWord("imfp") && word != kTpp2m && word.find_first_of("0123456789") != 0)
        section.Fail("imfp", R"(has to be a length such as "14 angstrom", or "TPP-2M")");
    if (word != kTpp2m) request.length_angstrom = section.Number("imfp", RecipeUnit::kAngstrom);
    request.gap_eV = section.Number("gap", RecipeUnit::kElectronVolt, request.gap_eV);
    if (request.length_angstrom && section.Has("gap"))
        section.Fail("gap", R"(is a setting of imfp = "TPP-2M")");
    section.Made(request.length_angstrom ? "imfp" : "gap", [&] { CheckMeanFreePath(request); });
    return request;
}

VibrationRequest ReadVibrationRequest(RecipeTable section, const ClusterFacts& cluster) {
    VibrationRequest request;
    request.temperature_K = Temperature(section, request.temperature_K);
    request.model = section.Word("model", request.model);
    request.debyeTemperature_K = NamedNumbers(section, "debye", RecipeUnit::kKelvin);
    request.uiso_angstrom2 = NamedNumbers(section, "uiso", RecipeUnit::kNone);
    for (const auto& [element, b] : NamedNumbers(section, "B", RecipeUnit::kNone))
        if (!request.uiso_angstrom2.emplace(element, b / kBOfUiso).second)
            section.Fail("B", element + " has a uiso already: give one of them");
    section.RefuseUnread();
    VibrationRequest complete = request;
    complete.elements = cluster.elements;
    section.Check([&] {
        MakeFluctuation(complete, DebyeTable(ProgramFile("debye_temperatures.csv")),
                        LoadAtomicWeights(ProgramFile("AtomicWeight.txt")));
    });
    return request;
}

}  // namespace qvre
