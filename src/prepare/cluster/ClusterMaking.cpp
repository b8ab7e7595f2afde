#include "prepare/cluster/ClusterMaking.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>
#include <utility>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/cluster/ClusterDisplacements.h"
#include "prepare/cluster/EmitterSites.h"
#include "prepare/cluster/SurfaceFrame.h"
#include "prepare/thermal/Vibrations.h"

namespace qvre {

namespace {

void CheckNumbers(const ClusterRequest& request) {
    if (!std::isfinite(request.size_angstrom) || request.size_angstrom < 0.0)
        throw ZfError("The size of the cluster has to be above 0 angstrom");
    if (request.size_angstrom == 0.0 && request.atoms > kMostAtoms)
        throw ZfError("More than " + std::to_string(kMostAtoms) + " atoms are not made");
    if (request.size_angstrom == 0.0 && request.atoms < 2) throw ZfError("A cluster needs at least 2 atoms");
    if (!std::isfinite(request.azimuth_deg)) throw ZfError("The azimuth is no angle");
    if (request.domains_deg.empty() || request.layers.empty())
        throw ZfError("A cluster needs at least one layer and one domain");
    for (const double turn : request.domains_deg)
        if (!std::isfinite(turn)) throw ZfError("A domain rotation is no angle");
    CheckTemperature(request.temperature_K);
}

/// "(001)", or "(1 0 -1)" when an index has a sign or two digits.
std::string MillerIndices(const std::array<int, 3>& hkl) {
    const bool digits = std::all_of(hkl.begin(), hkl.end(), [](int i) { return i >= 0 && i <= 9; });
    std::string text = "(";
    for (std::size_t i = 0; i < 3; ++i) {
        if (i > 0 && !digits) text += " ";
        text += std::to_string(hkl.at(i));
    }
    return text + ")";
}

std::string Title(const ClusterRequest& request, const StructureSummary& summary) {
    const bool oneElement = request.cell.Elements().size() == 1;
    std::string title = request.cell.Formula() + MillerIndices(request.surface) + " ";
    if (!oneElement) title += summary.emitter + " ";
    title += "emitter in layer " + std::to_string(summary.layer) + ", ";
    title += request.shape == ClusterShape::kHemisphere ? "hemisphere radius " : "paraboloid size ";
    title += fmt::format("{:.2f} A", summary.size_angstrom);
    if (summary.domain_deg != 0.0)
        title += fmt::format(", domain turned by {:g} degrees", summary.domain_deg);
    return title;
}

std::string ElementsOf(const CrystalCell& cell, const AtomicPlane& plane) {
    std::set<std::string> elements;
    for (const std::size_t atom : plane.atoms) elements.insert(cell.atoms[atom].element);
    std::string text;
    for (const std::string& element : elements) text += (text.empty() ? "" : " ") + element;
    return text;
}

/// Distances from the emitter, in groups that differ by less than 0.001 angstrom.
std::vector<NeighbourShell> ShellsAround(const std::vector<CutAtom>& atoms) {
    constexpr double kSameDistance_angstrom = 1e-3;
    std::vector<NeighbourShell> shells;
    for (std::size_t i = 1; i < atoms.size(); ++i) {
        const double distance = atoms[i].position.length();
        if (shells.empty() || distance - shells.back().distance_angstrom > kSameDistance_angstrom)
            shells.push_back({distance, 0});
        ++shells.back().atoms;
    }
    return shells;
}

Structure StructureOf(const CrystalCell& cell, const ClusterCut& cut) {
    Structure structure;
    structure.atoms.reserve(cut.atoms.size());
    for (const CutAtom& atom : cut.atoms) {
        ClusterAtom added;
        added.atom = cell.atoms[atom.site].element;
        added.name = added.atom;
        added.SetPositionAngstrom(Vector3(atom.position.x, atom.position.y, atom.position.z));
        structure.atoms.push_back(added);
    }
    return structure;
}

void AddStructure(const ClusterRequest& request, const SurfaceFrame& frame, const EmitterSite& emitter,
                  double domain_deg, MadeCluster& made) {
    const CrystalCell& cell = request.cell;
    const HalfCrystal half{&cell, frame.RotatedBy(request.azimuth_deg + domain_deg), emitter.bounds,
                           emitter.atom};
    const ClusterCut cut = request.size_angstrom > 0.0 ? CutBySize(half, request.shape, request.size_angstrom)
                                                       : CutByCount(half, request.shape, request.atoms);
    Structure structure = StructureOf(cell, cut);
    StructureSummary summary;
    summary.emitter = cell.atoms[emitter.atom].element;
    summary.site = static_cast<int>(emitter.atom) + 1;
    summary.layer = emitter.layer;
    summary.domain_deg = domain_deg;
    summary.surface_angstrom = emitter.bounds.top;
    summary.surfaceElements = ElementsOf(cell, frame.planes[emitter.bounds.plane]);
    summary.size_angstrom = cut.size;
    summary.shells = ShellsAround(cut.atoms);
    summary.nearestElement = cell.atoms[cut.atoms[1].site].element;
    summary.symmetry = FindPointSymmetry(structure.atoms);
    summary.title = Title(request, summary);
    if (made.hasUiso) SetDisplacements(cell, cut, structure);
    made.cluster.structures.push_back(std::move(structure));
    made.structures.push_back(std::move(summary));
}

}  // namespace

namespace {

constexpr const char* kTakeFewer = "take fewer sites of the emitter or fewer domains";

/// A request whose numbers are checked, with what follows from them.
struct Settled {
    explicit Settled(ClusterRequest wanted) : request(std::move(wanted)) {
        CheckNumbers(request);
        CheckCell(request.cell);
        hasUiso = SettleDisplacements(request);
        frame.emplace(request.cell, request.surface);
        emitters = FindEmitters(request, *frame);
        const std::size_t structures = emitters.size() * request.domains_deg.size();
        if (structures > kMostStructures)
            throw ZfError(
                fmt::format("{} emitters differ, which makes {} structures; more than {} are not made: {}",
                            emitters.size(), structures, kMostStructures, kTakeFewer));
    }

    ClusterRequest request;  ///< with displacements
    bool hasUiso = false;
    std::optional<SurfaceFrame> frame;
    std::vector<EmitterSite> emitters;
};

}  // namespace

void CheckClusterRequest(const ClusterRequest& request) {
    static_cast<void>(Settled(request));
}

MadeCluster MakeCluster(const ClusterRequest& request) {
    const Settled settled(request);
    MadeCluster made;
    made.hasUiso = settled.hasUiso;
    for (const EmitterSite& emitter : settled.emitters)
        for (const double domain : request.domains_deg)
            AddStructure(settled.request, *settled.frame, emitter, domain, made);
    return made;
}

std::vector<EmitterShare> SharesOf(const MadeCluster& made) {
    std::vector<EmitterShare> shares;
    for (const StructureSummary& structure : made.structures)
        shares.push_back({structure.surface_angstrom, static_cast<double>(structure.weight),
                          structure.emitter, structure.site, structure.layer});
    return shares;
}

std::string ManyStructuresWarning(std::size_t structures) {
    constexpr std::size_t kMany = 100;
    if (structures <= kMany) return {};
    return fmt::format(
        "a calculation of {} structures takes {} times as long as one of a single cluster; if that is too "
        "long, {}",
        structures, structures, kTakeFewer);
}

}  // namespace qvre
