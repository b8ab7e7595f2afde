#include "recipe/RecipeInputs.h"

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "foundation/ProgramFile.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/ClusterMaking.h"
#include "prepare/cluster/ClusterWriting.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/phases/EnergyList.h"
#include "prepare/phases/PhaseShifts.h"
#include "prepare/thermal/Elements.h"
#include "prepare/thermal/Vibrations.h"

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

CrystalCell ReadCell(RecipeTable& section, const RecipeFolder& place) {
    const std::string preset = section.Text("preset", "");
    const std::string cell = section.Text("cell", "");
    if (preset.empty() == cell.empty())
        section.Fail("preset", "give one of preset, cell (a crystal file) and file (a ready cluster)");
    if (!cell.empty()) return section.Made("cell", [&] { return LoadCell(place.Path(cell)); });
    const std::vector<std::string> elements = section.Texts("elements");
    const std::vector<double> lattice = section.Numbers("lattice", RecipeUnit::kAngstrom);
    return section.Made("preset", [&] { return PresetCell(preset, elements, lattice); });
}

ClusterRequest ReadClusterRequest(RecipeTable& section, const RecipeFolder& place) {
    ClusterRequest request;
    request.cell = ReadCell(section, place);
    const std::vector<int> surface = Integers(section, "surface");
    if (!surface.empty() && surface.size() != 3) section.Fail("surface", "has to be a list h, k, l");
    if (!surface.empty()) request.surface = {surface[0], surface[1], surface[2]};
    request.azimuth_deg = section.Number("azimuth", RecipeUnit::kDegree, 0.0);
    if (section.Has("domains")) request.domains_deg = section.Numbers("domains", RecipeUnit::kDegree);
    request.emitter = section.Text("emitter", "");
    request.sites = Integers(section, "sites");
    if (section.Has("emitter-layer")) request.layers = Integers(section, "emitter-layer");
    request.top = section.Text("top", "");
    const bool isParaboloid = section.Word("shape", {"hemisphere", "paraboloid"}) == "paraboloid";
    request.shape = isParaboloid ? ClusterShape::Paraboloid : ClusterShape::Hemisphere;
    request.size_angstrom = section.NotNegative("radius", RecipeUnit::kAngstrom, 0.0);
    const std::vector<int> atoms = Integers(section, "atoms");
    if (!atoms.empty()) request.atoms = atoms[0];
    if (!atoms.empty() && request.size_angstrom != 0.0)
        section.Fail("atoms", "give atoms or radius, not both");
    request.debye_K = NamedNumbers(section, "debye", RecipeUnit::kKelvin);
    request.temperature_K = section.NotNegative("temperature", RecipeUnit::kKelvin, request.temperature_K);
    request.weightTable = ProgramFile("AtomicWeight.txt");
    section.RefuseUnread();
    return request;
}

VibrationModel ReadModel(RecipeTable& section) {
    const std::string word = section.Word("model", {"debye", "einstein", "cluster"});
    if (word == "einstein") return VibrationModel::Einstein;
    return word == "debye" ? VibrationModel::Debye : VibrationModel::Cluster;
}

std::string ClusterRemark(const MadeCluster& made) {
    std::string remark;
    for (std::size_t i = 0; i < made.structures.size(); ++i) {
        const StructureSummary& structure = made.structures[i];
        remark += structure.title + ", " + std::to_string(made.cluster.structures[i].atoms.size()) +
                  " atoms, point symmetry " + structure.symmetry.Name() + "\n";
    }
    return remark;
}

ZfCluster Load(const std::string& clusterFile) {
    ZfCluster cluster;
    ZfLoadCluster(cluster, clusterFile);
    return cluster;
}

}  // namespace

std::string RecipeFolder::Path(const std::string& name) const {
    return (std::filesystem::path(folder) / name).string();
}

FileMaker CopyOfFile(RecipeTable& section, const RecipeFolder& place) {
    const std::string path = place.Path(section.Text("file", ""));
    if (!std::filesystem::is_regular_file(path)) section.Fail("file", "cannot read " + path);
    section.RefuseUnread();
    return [path](const std::string& output) {
        std::ostringstream content;
        content << std::ifstream(path, std::ios::binary).rdbuf();
        WriteWholeFile(output, content.str());
        return std::string();
    };
}

FileMaker ReadClusterSection(RecipeTable section, const RecipeFolder& place) {
    if (section.Has("file")) return CopyOfFile(section, place);
    return [request = ReadClusterRequest(section, place)](const std::string& output) {
        const MadeCluster made = MakeCluster(request);
        XyzStyle style;
        for (const StructureSummary& structure : made.structures) style.titles.push_back(structure.title);
        WriteCluster(made.cluster, output, style);
        return ClusterRemark(made);
    };
}

PhaseShiftRequest ReadPhaseShiftRequest(RecipeTable section) {
    PhaseShiftRequest request;
    if (section.Has("file")) return request;
    const std::string exchange = section.Word("exchange", {"furness", "slater", "none"});
    if (exchange == "slater") request.exchange = ExchangeKind::kSlater;
    if (exchange == "none") request.exchange = ExchangeKind::kNone;
    if (section.Flag("relativistic", false)) request.equation = RadialEquation::kScalarRelativistic;
    request.radius_angstrom = NamedNumbers(section, "radius", RecipeUnit::kAngstrom);
    request.zero_eV = section.Number("zero", RecipeUnit::kElectronVolt);
    const std::int64_t lMax = section.Integer("lmax").value_or(request.limits.lMax);
    if (lMax < 0 || lMax > 60) section.Fail("lmax", "has to lie between 0 and 60");
    request.limits.lMax = static_cast<std::int32_t>(lMax);
    request.limits.cut_deg = section.Number("cut", RecipeUnit::kDegree, request.limits.cut_deg);
    section.RefuseUnread();
    return request;
}

FileMaker ReadPhasesSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile,
                            const std::string& wavesFile) {
    if (section.Has("file")) return CopyOfFile(section, place);
    const PhaseShiftRequest request = ReadPhaseShiftRequest(section);
    return [=](const std::string& output) {
        PhaseShiftRequest complete = request;
        complete.energies_eV = EnergiesOfWaves(wavesFile);
        complete.species = SurroundingsInCluster(Load(clusterFile));
        PhaseShiftResult result =
            CalculatePhaseShifts(complete, ScreeningTable(ProgramFile("screening_dhfs.csv")));
        SavePhaseShifts(result.document, output);
        std::string remarks = PhaseShiftListing(result.rows);
        for (const std::string& warning : result.warnings) remarks += "warning: " + warning + "\n";
        return remarks;
    };
}

FileMaker ReadThermalSection(RecipeTable section, const RecipeFolder& place, const std::string& clusterFile) {
    if (section.Has("file")) return CopyOfFile(section, place);
    VibrationRequest request;
    request.temperature_K = section.NotNegative("temperature", RecipeUnit::kKelvin, request.temperature_K);
    request.model = ReadModel(section);
    request.debyeTemperature_K = NamedNumbers(section, "debye", RecipeUnit::kKelvin);
    section.RefuseUnread();
    return [=](const std::string& output) {
        VibrationRequest complete = request;
        complete.elements = ElementsOf(Load(clusterFile));
        SaveFluctuation(MakeFluctuation(complete, DebyeTable(ProgramFile("debye_temperatures.csv"))), output);
        return std::string();
    };
}
