#include "prepare/cluster/SurfaceBuilding.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/cluster/ShortBonds.h"
#include "prepare/cluster/SurfaceDomains.h"
#include "prepare/cluster/SurfaceRelaxation.h"
#include "prepare/cluster/SurfaceSites.h"
#include "prepare/cluster/SurfaceSlab.h"
#include "prepare/cluster/Terminations.h"

namespace qvre {

namespace {

double HighestAdsorbate(const SurfaceStructure& structure) {
    double height = 0.0;
    for (const Adsorbate& adsorbate : structure.adsorbates)
        for (const MoleculeAtom& atom : adsorbate.atoms)
            height = std::max(height, adsorbate.height_angstrom + atom.position.length());
    return height;
}

/// How deep the clusters reach below the top of the substrate, with some to spare.
double DepthOfClusters(const ClusterRequest& request, const SurfaceFrame& frame, double adsorbates) {
    constexpr double kSpare = 1.15;
    constexpr double kSpare_angstrom = 3.0;
    double emitter = request.depth_angstrom;
    if (!request.allEmitters) {
        const int deepest = *std::max_element(request.layers.begin(), request.layers.end());
        emitter = deepest * frame.period / static_cast<double>(frame.planes.size());
    }
    const double top = emitter + adsorbates;
    const double atomVolume =
        std::abs(request.cell.axes.determinant()) / static_cast<double>(request.cell.atoms.size());
    double size = request.size_angstrom;
    if (size == 0.0) size = SizeOfVolume(request.Shape(), request.atoms * atomVolume, top);
    if (size > SizeOfVolume(request.Shape(), kMostAtoms * atomVolume, top))
        throw ZfError(
            fmt::format("The cluster would have more than {} atoms: ask for a smaller one", kMostAtoms));
    const double depth =
        request.Shape() == ClusterShape::kParaboloid ? (size + emitter) / 2.0 : std::max(size, emitter);
    return kSpare * depth + adsorbates + kSpare_angstrom;
}

gemmi::Vec3 TurnedMolecule(const Adsorbate& adsorbate, const gemmi::Vec3& p) {
    const double tilt = gemmi::rad(adsorbate.tilt_deg);
    const double turn = gemmi::rad(adsorbate.turn_deg);
    const gemmi::Vec3 tilted(std::cos(tilt) * p.x + std::sin(tilt) * p.z, p.y,
                             std::cos(tilt) * p.z - std::sin(tilt) * p.x);
    return {std::cos(turn) * tilted.x - std::sin(turn) * tilted.y,
            std::sin(turn) * tilted.x + std::cos(turn) * tilted.y, tilted.z};
}

/// Puts one adsorbate on the slab, which has the cell `superstructure` by now.
void Place(const Adsorbate& adsorbate, const AdsorbatePlan& plan, const SurfaceSlab& unit,
           const Superstructure& superstructure, SurfaceSlab& slab) {
    gemmi::Vec3 site = plan.site ? plan.site->PlaceOn(unit)
                                 : unit.atoms.front().position + unit.lattice[0] * adsorbate.place[0] +
                                       unit.lattice[1] * adsorbate.place[1];
    site.z = unit.Top() + adsorbate.height_angstrom;
    std::vector<std::array<int, 2>> cells = {{0, 0}};
    if (plan.fillsEachCell) cells = superstructure.CellsInside();
    for (const auto& [i, j] : cells)
        for (const MoleculeAtom& atom : adsorbate.atoms) {
            const gemmi::Vec3 place = site + unit.lattice[0] * i + unit.lattice[1] * j +
                                      TurnedMolecule(adsorbate, atom.position - adsorbate.atoms[0].position);
            slab.atoms.insert(slab.atoms.begin(), {atom.element, place, atom.Uiso_angstrom2, 0});
        }
}

void CheckNumbers(const Adsorbate& adsorbate) {
    constexpr double kHighest_angstrom = 5.0;
    if (!(std::abs(adsorbate.height_angstrom) < kHighest_angstrom))
        throw ZfError(
            fmt::format("The adsorbate {} has the height {:g} angstrom: it has to be less than {:g}",
                        adsorbate.name, adsorbate.height_angstrom, kHighest_angstrom));
    for (const double number :
         {adsorbate.tilt_deg, adsorbate.turn_deg, adsorbate.place[0], adsorbate.place[1]})
        if (!(std::abs(number) < 1e4))
            throw ZfError("The adsorbate " + adsorbate.name + " has a place or an angle that is none");
}

void CheckCoverage(const Adsorbate& adsorbate, const SurfaceLattice& lattice) {
    const double coverage = 1.0 / ParseSuperstructure(adsorbate.superstructure, lattice).Cells();
    constexpr double kRounding = 0.005;
    if (adsorbate.coverage && std::abs(*adsorbate.coverage - coverage) > kRounding)
        throw ZfError(fmt::format(
            "The coverage {:g} of the adsorbate {} does not fit its superstructure {}, which has one in {} "
            "cells, {:.3g}: give another superstructure, or more adsorbates; for islands on a bare "
            "surface leave it out, as the pattern of the adsorbate does not depend on it",
            *adsorbate.coverage, adsorbate.name,
            adsorbate.superstructure.empty() ? "(1x1)" : adsorbate.superstructure,
            std::lround(1.0 / coverage), coverage));
}

/// The superstructure of all adsorbates; those without one fill each cell.
Superstructure CommonSuperstructure(const SurfaceStructure& structure, const SurfaceLattice& lattice,
                                    std::string& name) {
    Superstructure common;
    for (const Adsorbate& adsorbate : structure.adsorbates) {
        CheckNumbers(adsorbate);
        CheckCoverage(adsorbate, lattice);
        const Superstructure own = ParseSuperstructure(adsorbate.superstructure, lattice);
        if (own.IsUnit()) continue;
        if (!common.IsUnit() && common.matrix != own.matrix)
            throw ZfError(
                fmt::format("The adsorbates have the superstructures {} and {}: give both the larger "
                            "cell that holds them, and each adsorbate in it",
                            name, adsorbate.superstructure));
        common = own;
        name = adsorbate.superstructure;
    }
    return common;
}

std::string Named(const SurfaceSlab& slab, std::size_t atom) {
    const SlabAtom& one = slab.atoms[atom];
    return one.layer == 0 ? one.element + " of the adsorbates"
                          : fmt::format("{} in layer {}", one.element, one.layer);
}

/// Refuses atoms that collide and tells of the bond that is shortest beside its usual length.
std::string CheckBonds(const SurfaceSlab& slab, const CrystalCell& cell) {
    constexpr double kCollision_angstrom = 0.5;
    constexpr double kRounding = 1e-9;
    double shortest = 1.0;
    std::string told;
    for (const ShortBond& bond : ShortBondsOf(cell)) {
        if (bond.distance < kCollision_angstrom)
            throw ZfError(fmt::format("{} and {} collide: they are {:.3f} angstrom apart",
                                      Named(slab, bond.first), Named(slab, bond.second), bond.distance));
        if (bond.distance / bond.usual > shortest - kRounding) continue;
        shortest = bond.distance / bond.usual;
        told = fmt::format("warning: {} and {} are {:.3f} angstrom apart, where {:.2f} is usual\n",
                           Named(slab, bond.first), Named(slab, bond.second), bond.distance, bond.usual);
    }
    return told;
}

/// The substrate in its (1x1) cell, with the layers where the relaxation has them.
SurfaceSlab RelaxedUnit(const ClusterRequest& request, const SurfacePlan& plan) {
    SurfaceSlab unit = SlabOf(request.cell, request.surface, plan.substrate);
    RelaxLayers(request.structure.relaxation, unit);
    return unit;
}

/// The cell of the superstructure with the adsorbates.
SurfaceSlab Covered(const SurfaceSlab& unit, const SurfaceStructure& structure, const SurfacePlan& plan) {
    SurfaceSlab slab = Repeated(unit, plan.superstructure);
    for (std::size_t i = 0; i < structure.adsorbates.size(); ++i)
        Place(structure.adsorbates[i], plan.adsorbates[i], unit, plan.superstructure, slab);
    return slab;
}

std::string CellText(const SurfaceLattice& lattice) {
    const auto vector = [](const gemmi::Vec3& v) {
        return fmt::format("{:.3f} angstrom at {:.4g} degrees", v.length(),
                           std::round(gemmi::deg(std::atan2(v.y, v.x)) * 1e4) / 1e4 + 0.0);
    };
    return "cell of the surface: " + vector(lattice[0]) + " and " + vector(lattice[1]);
}

std::vector<std::string> DomainWords(const std::vector<ClusterDomain>& domains) {
    std::vector<std::string> words;
    words.reserve(domains.size());
    for (const ClusterDomain& domain : domains)
        words.push_back(domain.isMirrored
                            ? fmt::format("mirrored at {:g}", std::remainder(domain.turn_deg / 2.0, 180.0))
                            : fmt::format("turned by {:g}", domain.turn_deg));
    return words;
}

std::string DomainText(const std::vector<ClusterDomain>& domains) {
    const std::vector<std::string> words = DomainWords({domains.begin() + 1, domains.end()});
    return fmt::format("other domains of the surface are {} degrees: domains = \"symmetry\" takes all\n",
                       fmt::join(words, ", "));
}

std::string NameOf(const SurfaceStructure& structure, const std::string& superstructure,
                   const std::string& surface) {
    if (structure.adsorbates.empty()) return "relaxed " + surface;
    std::vector<std::string> names;
    for (const Adsorbate& adsorbate : structure.adsorbates) names.push_back(adsorbate.name);
    const bool isMatrix = superstructure.find(' ') != std::string::npos;
    const std::string cell = isMatrix ? "(" + superstructure + ")" : superstructure;
    return fmt::format("{}{}{}/{}", cell, cell.empty() ? "" : "-", fmt::join(names, "+"), surface);
}

/// The domains as they lie in a frame that is turned.
std::vector<ClusterDomain> Weighted(std::vector<ClusterDomain> domains, const std::vector<double>& weights) {
    if (!weights.empty() && weights.size() != domains.size())
        throw ZfError(fmt::format("A weight is needed for each domain, {} degrees: {} of {} given",
                                  fmt::join(DomainWords(domains), ", "), weights.size(), domains.size()));
    for (std::size_t i = 0; i < weights.size(); ++i) domains[i].weight = weights[i];
    return domains;
}

}  // namespace

SurfacePlan PlanSurface(const ClusterRequest& request) {
    const SurfaceStructure& structure = request.structure;
    SurfacePlan plan;
    if (structure.IsEmpty()) return plan;
    if (!request.sites.empty())
        throw ZfError(
            "Sites count the atoms of the crystal's cell, which a surface with relaxation or adsorbates "
            "does not have: choose the emitters by element, layer or depth");
    CheckCell(request.cell);
    ClusterRequest layered = request;
    layered.allEmitters = true;  // for its layer tolerance and terraces
    CheckLayerTolerance(layered);
    const SurfaceFrame frame(request.cell, request.surface, LayerTolerance_angstrom(layered));
    const Termination termination = ChosenTermination(layered, frame);
    plan.terraces = TerraceRemarks(layered, frame);

    const double adsorbates = HighestAdsorbate(structure);
    const int leastLayers = std::max(3, LayersIn(structure.relaxation) + 2);
    plan.substrate =
        SitesBelow(request.cell, request.surface, frame, termination,
                   std::max(frame.period, DepthOfClusters(request, frame, adsorbates)), leastLayers);
    const SurfaceSlab unit = RelaxedUnit(request, plan);
    plan.superstructure = CommonSuperstructure(structure, unit.lattice, plan.superstructureName);
    for (const Adsorbate& adsorbate : structure.adsorbates) {
        AdsorbatePlan place;
        if (!adsorbate.site.empty()) place.site = FindSite(unit, adsorbate.site);
        place.fillsEachCell = ParseSuperstructure(adsorbate.superstructure, unit.lattice).IsUnit();
        plan.adsorbates.push_back(place);
    }
    const SurfaceSlab slab = Covered(unit, structure, plan);
    for (const AtomMove& move : structure.relaxation.moves)
        plan.moves.push_back(FindMoved(move, unit.lattice, slab));
    return plan;
}

SurfacePlan PlanMovingSurface(const ClusterRequest& request) {
    constexpr double kRounding_angstrom = 1e-6;
    SurfacePlan plan = PlanSurface(request);
    if (!request.structure.takesAllDomains) return plan;
    SurfacePlan exact = plan;
    exact.symmetryTolerance_angstrom = kRounding_angstrom;
    ClusterRequest unweighted = request;
    unweighted.structure.domainWeights.clear();
    const auto domains = [&](const SurfacePlan& one) { return BuiltSurface(unweighted, one).domains.size(); };
    return domains(exact) == domains(plan) ? exact : plan;
}

ClusterRequest BuiltSurface(const ClusterRequest& request, const SurfacePlan& plan) {
    const SurfaceStructure& structure = request.structure;
    ClusterRequest built = request;
    built.structure = {};
    if (plan.IsEmpty()) {
        if (structure.takesAllDomains)
            throw ZfError(
                "The domains of a surface without relaxation and adsorbates are those of its terraces, "
                "as --list-terminations tells: give their angles");
        built.domains = Weighted(request.domains, structure.domainWeights);
        return built;
    }
    CheckCell(request.cell);
    for (const Adsorbate& adsorbate : structure.adsorbates) CheckNumbers(adsorbate);
    const SurfaceSlab unit = RelaxedUnit(request, plan);
    SurfaceSlab slab = Covered(unit, structure, plan);
    MoveAtoms(structure.relaxation.moves, plan.moves, slab);
    const CrystalCell bulk = CellOf(SlabOf(request.cell, request.surface, plan.substrate));

    built.cell = CellOf(slab);
    built.remarks = CellText(slab.lattice) + "\n" + CheckBonds(slab, built.cell);
    const std::vector<ClusterDomain> domains = DomainsOf(bulk, built.cell, plan.symmetryTolerance_angstrom);
    if (structure.takesAllDomains)
        built.domains = domains;
    else if (domains.size() > 1 && request.domains.size() == 1)
        built.remarks += DomainText(domains);
    built.domains = Weighted(built.domains, structure.domainWeights);
    const gemmi::Vec3& x = slab.lattice[0];
    const double turn_deg = gemmi::deg(std::atan2(x.y, x.x));
    for (ClusterDomain& domain : built.domains)
        if (domain.isMirrored) domain.turn_deg -= 2.0 * turn_deg;
    built.azimuth_deg += turn_deg;
    built.remarks += plan.terraces;
    built.surfaceName =
        NameOf(structure, plan.superstructureName, SurfaceName(request.cell, request.surface));
    built.surface = {0, 0, 1};
    built.termination.clear();
    return built;
}

ClusterRequest OnBuiltSurface(const ClusterRequest& request) {
    return BuiltSurface(request, PlanSurface(request));
}

}  // namespace qvre
