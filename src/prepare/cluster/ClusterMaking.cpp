#include "prepare/cluster/ClusterMaking.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/cluster/CellGrid.h"
#include "prepare/cluster/ClusterDisplacements.h"
#include "prepare/cluster/EmitterSites.h"
#include "prepare/cluster/EqualStructures.h"
#include "prepare/cluster/SurfaceBuilding.h"
#include "prepare/cluster/SurfaceFrame.h"
#include "prepare/cluster/Terminations.h"
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
    if (request.domains.empty() || request.layers.empty())
        throw ZfError("A cluster needs at least one layer and one domain");
    for (const ClusterDomain& domain : request.domains) {
        if (!std::isfinite(domain.turn_deg)) throw ZfError("A domain rotation is no angle");
        if (!(std::isfinite(domain.weight) && domain.weight > 0.0))
            throw ZfError("The weight of a domain has to be above 0");
    }
    CheckTemperature(request.temperature_K);
}

std::string Title(const ClusterRequest& request, const StructureSummary& summary) {
    const bool oneElement = request.cell.Elements().size() == 1;
    std::string title =
        request.surfaceName.empty() ? SurfaceName(request.cell, request.surface) : request.surfaceName;
    title += " ";
    if (!oneElement) title += summary.emitter + " ";
    title += "emitter in layer " + std::to_string(summary.layer) + ", ";
    if (request.allEmitters) title += fmt::format("depth {:.2f} A, ", summary.surface_angstrom);
    title += request.Shape() == ClusterShape::kHemisphere ? "hemisphere radius " : "paraboloid size ";
    title += fmt::format("{:.2f} A", summary.size_angstrom);
    if (summary.domain.isMirrored)
        title += fmt::format(", domain mirrored at {:g} degrees",
                             std::remainder(request.azimuth_deg + summary.domain.turn_deg / 2.0, 180.0));
    else if (summary.domain.turn_deg != 0.0)
        title += fmt::format(", domain turned by {:g} degrees", summary.domain.turn_deg);
    return title;
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
        added.atom = cell.atoms[atom.atom.site].element;
        added.name = added.atom;
        added.SetPositionAngstrom(Vector3(atom.position.x, atom.position.y, atom.position.z));
        structure.atoms.push_back(added);
    }
    return structure;
}

/// The axes of the surface as a domain lies: turned with the crystal and mirrored in its own frame.
gemmi::Mat33 RotationOf(const ClusterRequest& request, const SurfaceFrame& frame,
                        const ClusterDomain& domain) {
    if (!domain.isMirrored) return frame.RotatedBy(request.azimuth_deg + domain.turn_deg);
    // The mirror plane turns with the crystal: of what the crystal's own turn would be, the opposite counts.
    const gemmi::Mat33 mirror(1.0, 0.0, 0.0, 0.0, -1.0, 0.0, 0.0, 0.0, 1.0);
    return mirror.multiply(frame.RotatedBy(-request.azimuth_deg - domain.turn_deg));
}

/// The emitter of a structure.
struct Emitter {
    std::size_t atom = 0;  ///< index in the cell
    int layer = 1;
    int weight = 1;
    double depth_angstrom = 0.0;
    std::string surfaceElements;  ///< of the surface plane
};

void AddStructure(const ClusterRequest& request, const Emitter& emitter, const ClusterDomain& domain,
                  bool hasUiso, const ClusterCut& cut, MadeCluster& made) {
    const CrystalCell& cell = request.cell;
    std::vector<CutAtom> byDistance = cut.atoms;
    SortByDistance(byDistance);
    Structure structure = StructureOf(cell, cut);
    StructureSummary summary;
    summary.emitter = cell.atoms[emitter.atom].element;
    summary.site = static_cast<int>(emitter.atom) + 1;
    summary.layer = emitter.layer;
    summary.weight = emitter.weight;
    summary.domain = domain;
    summary.surface_angstrom = emitter.depth_angstrom;
    summary.surfaceElements = emitter.surfaceElements;
    summary.size_angstrom = cut.size;
    summary.shells = ShellsAround(byDistance);
    summary.nearestElement = cell.atoms[byDistance[1].atom.site].element;
    summary.symmetry = FindPointSymmetry(structure.atoms);
    summary.title = Title(request, summary);
    if (hasUiso) SetDisplacements(cell, cut, structure);
    made.cluster.structures.push_back(std::move(structure));
    made.structures.push_back(std::move(summary));
}

/// Takes the structures of the last emitter, one a domain, away when an earlier emitter at the same depth
/// sees the same, and adds their weights there.
void JoinEqual(MadeCluster& made, std::size_t domains, double tolerance_angstrom) {
    std::vector<Structure>& structures = made.cluster.structures;
    const std::size_t last = structures.size() - domains;
    for (std::size_t earlier = 0; earlier < last; earlier += domains) {
        const double depth = made.structures[earlier].surface_angstrom;
        if (std::abs(depth - made.structures[last].surface_angstrom) > tolerance_angstrom ||
            !HaveSameAtoms(structures[earlier].atoms, structures[last].atoms, tolerance_angstrom))
            continue;
        for (std::size_t domain = 0; domain < domains; ++domain)
            made.structures[earlier + domain].weight += made.structures[last + domain].weight;
        structures.resize(last);
        made.structures.resize(last);
        return;
    }
}

/// Weights as the smallest whole numbers.
void ReduceWeights(std::vector<StructureSummary>& structures) {
    int divisor = 0;
    for (const StructureSummary& structure : structures) divisor = std::gcd(divisor, structure.weight);
    for (StructureSummary& structure : structures) structure.weight /= divisor;
}

/// How many atoms of the half crystal are nearest neighbours of an emitter, with those at about their
/// distance.
int NeighboursOf(const CellGrid& grid, const CrystalCell& cell, const SurfaceFrame& frame,
                 const StructureSummary& structure, double reach) {
    const std::vector<CellGrid::Found> found =
        grid.Near(cell.atoms[static_cast<std::size_t>(structure.site) - 1].fractional, reach);
    return static_cast<int>(std::count_if(found.begin(), found.end(), [&](const CellGrid::Found& near) {
        const double height = near.offset.dot(frame.rotation.row_copy(2));
        return near.distance > kSamePlane_angstrom &&
               height < structure.surface_angstrom + kSamePlane_angstrom;
    }));
}

std::string NarrowRemark(const CrystalCell& cell, const SurfaceFrame& frame, const MadeCluster& made) {
    constexpr double kRounding_angstrom = 1e-3;
    const CellGrid grid(cell);
    for (const StructureSummary& structure : made.structures) {
        const NeighbourShell& nearest = structure.shells.front();
        const double reach = nearest.distance_angstrom + kRounding_angstrom;
        if (NeighboursOf(grid, cell, frame, structure, reach) > nearest.atoms)
            return fmt::format(
                "clusters of emitters from a depth of {:.3f} angstrom on lack some of the nearest "
                "neighbours, "
                "those behind: ask for more atoms where backscattering counts\n",
                structure.surface_angstrom);
    }
    return {};
}

const char* TakeFewer(bool allEmitters) {
    return allEmitters ? "take a smaller depth or fewer domains"
                       : "take fewer sites of the emitter or fewer domains";
}

/// A request for clusters of a surface that is built, whose numbers are checked, with what follows from them.
struct Settled {
    Settled(const ClusterRequest& wanted, const SurfacePlan& plan) {
        CheckNumbers(wanted);
        request = BuiltSurface(wanted, plan);
        CheckNumbers(request);
        CheckCell(request.cell);
        hasUiso = SettleDisplacements(request);
        CheckLayerTolerance(request);
        frame.emplace(request.cell, request.surface, LayerTolerance_angstrom(request));
    }

    std::vector<EmitterSite> Emitters(EqualEmitters equal) const {
        std::vector<EmitterSite> emitters = FindEmitters(request, *frame, equal);
        const std::size_t structures = emitters.size() * request.domains.size();
        if (structures > kMostStructures)
            throw ZfError(
                fmt::format("{} emitters differ, which makes {} structures; more than {} are not made: {}",
                            emitters.size(), structures, kMostStructures, TakeFewer(request.allEmitters)));
        return emitters;
    }

    HalfCrystal Around(const EmitterSite& emitter, const ClusterDomain& domain) const {
        return {&request.cell, RotationOf(request, *frame, domain), emitter.bounds, emitter.atom};
    }

    std::string SurfaceElements(const EmitterSite& emitter) const {
        return ElementsOf(request.cell, frame->planes[emitter.bounds.plane].atoms);
    }

    ClusterRequest request;  ///< with displacements
    bool hasUiso = false;
    std::optional<SurfaceFrame> frame;
};

/// A deep emitter outside of its hemisphere would see the atoms at the surface and none around itself.
void CheckReach(const ClusterRequest& request, const EmitterSite& emitter, const ClusterCut& cut) {
    if (!request.allEmitters || request.Shape() != ClusterShape::kHemisphere) return;
    if (cut.size > emitter.bounds.top) return;
    throw ZfError(
        fmt::format("The emitter at a depth of {:.3f} angstrom lies outside of its hemisphere of "
                    "radius {:.3f} angstrom: take the shape paraboloid, a larger cluster or a "
                    "smaller depth",
                    emitter.bounds.top, cut.size));
}

ClusterCut CutAround(const Settled& settled, const EmitterSite& emitter, const ClusterDomain& domain) {
    const ClusterRequest& request = settled.request;
    const HalfCrystal half = settled.Around(emitter, domain);
    ClusterCut cut = request.size_angstrom > 0.0 ? CutBySize(half, request.Shape(), request.size_angstrom)
                                                 : CutByCount(half, request.Shape(), request.atoms);
    CheckReach(request, emitter, cut);
    return cut;
}

std::vector<std::string> ElementsByAtom(const CrystalCell& cell) {
    std::vector<std::string> elements;
    for (const CellAtom& atom : cell.atoms) elements.push_back(atom.element);
    return elements;
}

/// Height of an atom in the cell (0, 0, 0).
double HeightOf(const Settled& settled, std::size_t atom) {
    const CrystalCell& cell = settled.request.cell;
    return settled.frame->rotation.multiply(cell.Position(cell.atoms[atom])).z;
}

KeptEmitter Kept(const Settled& settled, const EmitterSite& emitter) {
    KeptEmitter kept;
    kept.emitter = emitter;
    kept.surfaceElements = settled.SurfaceElements(emitter);
    for (const CutAtom& atom : CutAround(settled, emitter, settled.request.domains.front()).atoms)
        kept.atoms.push_back(atom.atom);
    const double top = HeightOf(settled, emitter.atom) + emitter.bounds.top + kSamePlane_angstrom;
    for (std::size_t atom = 0; atom < settled.request.cell.atoms.size(); ++atom)
        kept.periods.push_back(
            static_cast<int>(std::floor((top - HeightOf(settled, atom)) / settled.frame->period)));
    return kept;
}

/// How far the highest of the atoms lies over the emitter.
double DepthOf(const Settled& settled, const KeptEmitter& kept) {
    double top = -std::numeric_limits<double>::infinity();
    for (std::size_t atom = 0; atom < kept.periods.size(); ++atom)
        top = std::max(top, HeightOf(settled, atom) + kept.periods[atom] * settled.frame->period);
    return top - HeightOf(settled, kept.emitter.atom);
}

/// Refuses a structure of other atoms: before it is built by the plan, and then.
void CheckSame(bool isSame) {
    if (!isSame)
        throw ZfError(
            "The structure has other atoms, adsorbates or moves than that from which the atoms of the "
            "clusters were chosen");
}

}  // namespace

void CheckClusterRequest(const ClusterRequest& request) {
    Settled(request, PlanSurface(request)).Emitters(EqualEmitters::kJoined);
}

MadeCluster MakeCluster(const ClusterRequest& request) {
    constexpr double kSame_angstrom = 1e-4;
    const Settled settled(request, PlanSurface(request));
    MadeCluster made;
    made.hasUiso = settled.hasUiso;
    if (!request.structure.IsEmpty()) made.slab = settled.request.cell;
    made.remarks = settled.request.remarks + TerraceRemarks(settled.request, *settled.frame);
    const std::vector<ClusterDomain>& domains = settled.request.domains;
    for (const EmitterSite& site : settled.Emitters(EqualEmitters::kJoined)) {
        const Emitter emitter = {site.atom, site.layer, site.weight, site.bounds.top,
                                 settled.SurfaceElements(site)};
        for (const ClusterDomain& domain : domains)
            AddStructure(settled.request, emitter, domain, settled.hasUiso, CutAround(settled, site, domain),
                         made);
        if (request.allEmitters) JoinEqual(made, domains.size(), kSame_angstrom);
    }
    ReduceWeights(made.structures);
    if (request.allEmitters) made.remarks += NarrowRemark(settled.request.cell, *settled.frame, made);
    return made;
}

ClusterSelection SelectAtoms(const ClusterRequest& start) {
    ClusterSelection selection;
    selection.surface = PlanMovingSurface(start);
    const Settled settled(start, selection.surface);
    selection.crystal = ElementsByAtom(start.cell);
    selection.cell = ElementsByAtom(settled.request.cell);
    for (const EmitterSite& emitter : settled.Emitters(EqualEmitters::kKept))
        selection.emitters.push_back(Kept(settled, emitter));
    return selection;
}

MadeCluster MakeCluster(const ClusterRequest& moved, const ClusterSelection& kept) {
    // Equal but for rounding: those that differ by a small step of a parameter have to stay apart.
    constexpr double kSame_angstrom = 1e-7;
    CheckSame(ElementsByAtom(moved.cell) == kept.crystal &&
              moved.structure.IsEmpty() == kept.surface.IsEmpty() &&
              moved.structure.adsorbates.size() == kept.surface.adsorbates.size() &&
              moved.structure.relaxation.moves.size() == kept.surface.moves.size());
    const Settled settled(moved, kept.surface);
    CheckSame(ElementsByAtom(settled.request.cell) == kept.cell);
    MadeCluster made;
    made.hasUiso = settled.hasUiso;
    if (!moved.structure.IsEmpty()) made.slab = settled.request.cell;
    made.remarks = settled.request.remarks;
    const std::vector<ClusterDomain>& domains = settled.request.domains;
    for (const KeptEmitter& one : kept.emitters) {
        EmitterSite site = one.emitter;
        site.bounds.top = DepthOf(settled, one);
        const Emitter emitter = {site.atom, site.layer, site.weight, site.bounds.top, one.surfaceElements};
        for (const ClusterDomain& domain : domains)
            AddStructure(settled.request, emitter, domain, settled.hasUiso,
                         CutOfAtoms(settled.Around(site, domain), settled.request.Shape(), one.atoms), made);
        JoinEqual(made, domains.size(), kSame_angstrom);
    }
    ReduceWeights(made.structures);
    return made;
}

std::vector<EmitterShare> SharesOf(const MadeCluster& made) {
    std::vector<EmitterShare> shares;
    for (const StructureSummary& structure : made.structures)
        shares.push_back({structure.surface_angstrom, structure.weight * structure.domain.weight,
                          structure.emitter, structure.site, structure.layer});
    return shares;
}

std::string ManyStructuresWarning(std::size_t structures, bool allEmitters) {
    constexpr std::size_t kMany = 100;
    if (structures <= kMany) return {};
    return fmt::format(
        "a calculation of {} structures takes {} times as long as one of a single cluster; if that is too "
        "long, {}",
        structures, structures, TakeFewer(allEmitters));
}

}  // namespace qvre
