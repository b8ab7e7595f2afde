#include "prepare/phases/Surroundings.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <tuple>

#include "foundation/Constants.h"
#include "foundation/Vec3.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CellCheck.h"
#include "prepare/phases/PhaseShiftFile.h"
#include "prepare/phases/VoronoiCell.h"

namespace qvre {

namespace {

constexpr double kSameShell = 0.02;    // angstrom
constexpr double kSamePlace = 0.1;     // angstrom
constexpr double kRoom = 0.7;          // of the nearest distance: closer no atom can stand to another
constexpr double kSmoothCount = 4.0;   // angstrom: range in which neighbours are counted
constexpr double kNearShells = 1.25;   // of the nearest distance: the shells that make sites alike
constexpr double kVoronoiReach = 3.5;  // of the nearest distance
constexpr std::size_t kMostCandidates = 150;

/// An atom of a crystal or a cluster, angstrom.
struct PlacedAtom {
    std::string name;
    std::string element;
    Vec3 position = {};
};

struct Neighbour {
    double distance = 0.0;  // angstrom
    std::string element;
    Vec3 vector = {};
};

std::vector<Neighbour> NeighboursOf(const std::vector<PlacedAtom>& atoms, const Vec3& centre) {
    std::vector<Neighbour> neighbours;
    for (const PlacedAtom& atom : atoms) {
        Neighbour n{0.0, atom.element, {}};
        for (std::size_t i = 0; i < 3; ++i) n.vector[i] = atom.position[i] - centre[i];
        n.distance = std::hypot(n.vector[0], n.vector[1], n.vector[2]);
        if (n.distance > 1e-3 && n.distance < kSurroundingsReach) neighbours.push_back(n);
    }
    std::stable_sort(neighbours.begin(), neighbours.end(), [](const Neighbour& a, const Neighbour& b) {
        return std::tie(a.distance, a.element) < std::tie(b.distance, b.element);
    });
    return neighbours;
}

/// Shells in angstrom: runs of one element whose distances follow each other within kSameShell.
std::vector<AtomShell> ShellsOf(const std::vector<Neighbour>& neighbours) {
    std::vector<AtomShell> shells;
    for (const Neighbour& n : neighbours) {
        const auto same = std::find_if(shells.rbegin(), shells.rend(), [&](const AtomShell& shell) {
            return shell.element == n.element && n.distance - shell.distance < kSameShell;
        });
        if (same == shells.rend())
            shells.push_back({n.element, n.distance, 1.0});
        else
            ++same->count;
    }
    return shells;
}

double CellVolume(const std::vector<Neighbour>& neighbours) {
    std::vector<Vec3> near;
    for (const Neighbour& n : neighbours)
        if (n.distance < kVoronoiReach * neighbours[0].distance) near.push_back(n.vector);
    return VoronoiVolume(near);
}

/// One atom that may stand for its species.
struct Site {
    std::vector<Neighbour> neighbours;  // rising distance
    double crowd = 0.0;                 // their number, weighted by nearness
};

Site SiteOf(const std::vector<PlacedAtom>& atoms, const Vec3& centre) {
    Site site{NeighboursOf(atoms, centre), 0.0};
    if (site.neighbours.empty())
        throw ZfError("An atom has no neighbours: phase shifts need a cluster of atoms");
    for (const Neighbour& n : site.neighbours)
        site.crowd += std::exp(-std::pow(n.distance / kSmoothCount, 2));
    return site;
}

double Separation(const Neighbour& a, const Neighbour& b) {
    return std::hypot(a.vector[0] - b.vector[0], a.vector[1] - b.vector[1], a.vector[2] - b.vector[2]);
}

bool Sees(const Site& site, const Neighbour& wanted, double tolerance) {
    auto n = std::lower_bound(site.neighbours.begin(), site.neighbours.end(), wanted.distance - tolerance,
                              [](const Neighbour& a, double distance) { return a.distance < distance; });
    for (; n != site.neighbours.end() && n->distance < wanted.distance + tolerance; ++n)
        if (n->element == wanted.element && Separation(*n, wanted) < tolerance) return true;
    return false;
}

/// Whether the nearest neighbours stand in the same directions, so that a lattice vector may lie between
/// them.
bool AlikeNearby(const Site& a, const Site& b) {
    const double reach = kNearShells * a.neighbours[0].distance;
    return std::all_of(a.neighbours.begin(), a.neighbours.end(),
                       [&](const Neighbour& n) { return n.distance >= reach || Sees(b, n, kSamePlace); });
}

/// Adds the neighbours that another atom sees, where there is room for them.
void Complete(Site& site, const Site& other) {
    const double room = kRoom * site.neighbours[0].distance;
    for (const Neighbour& n : other.neighbours) {
        if (Sees(site, n, kSamePlace) || n.distance < room) continue;
        const bool crowded = std::any_of(site.neighbours.begin(), site.neighbours.end(),
                                         [&](const Neighbour& own) { return Separation(own, n) < room; });
        if (crowded) continue;
        const auto place =
            std::upper_bound(site.neighbours.begin(), site.neighbours.end(), n.distance,
                             [](double distance, const Neighbour& own) { return distance < own.distance; });
        site.neighbours.insert(place, n);
    }
}

/// Shares of an atom's neighbours within twice the nearest distance.
double Completeness(const std::vector<Neighbour>& neighbours, double cellVolume) {
    if (cellVolume == 0.0) return 0.0;
    const double reach = 2.0 * neighbours[0].distance + kSameShell;
    const auto within = std::count_if(neighbours.begin(), neighbours.end(),
                                      [reach](const Neighbour& n) { return n.distance < reach; });
    return (1.0 + static_cast<double>(within)) / (4.0 / 3.0 * kPi * std::pow(reach, 3) / cellVolume);
}

AtomSurroundings InAtomicUnits(const Site& site, const PlacedAtom& atom, double weight) {
    const double volume = CellVolume(site.neighbours);
    AtomSurroundings result{atom.name,
                            atom.element,
                            ShellsOf(site.neighbours),
                            volume / std::pow(kBohr_angstrom, 3),
                            weight,
                            Completeness(site.neighbours, volume)};
    for (AtomShell& shell : result.shells) shell.distance /= kBohr_angstrom;
    return result;
}

std::vector<PlacedAtom> AtomsOf(const Structure& structure) {
    std::vector<PlacedAtom> atoms;
    for (const ClusterAtom& atom : structure.atoms) {
        ZfLDoubleMatrix p = atom.PositionAngstrom();
        atoms.push_back({atom.name, atom.atom, {p.VectorAt(0), p.VectorAt(1), p.VectorAt(2)}});
    }
    return atoms;
}

double SquareDistance(const Vec3& a, const Vec3& b) {
    return std::pow(a[0] - b[0], 2) + std::pow(a[1] - b[1], 2) + std::pow(a[2] - b[2], 2);
}

Vec3 Centroid(const std::vector<PlacedAtom>& atoms) {
    Vec3 sum = {};
    for (const PlacedAtom& atom : atoms)
        for (std::size_t i = 0; i < 3; ++i) sum[i] += atom.position[i] / static_cast<double>(atoms.size());
    return sum;
}

/// The atoms of a name that lie nearest to the middle of the cluster.
std::vector<Vec3> Candidates(const std::vector<PlacedAtom>& atoms, const std::string& name) {
    const Vec3 middle = Centroid(atoms);
    std::vector<Vec3> candidates;
    for (const PlacedAtom& atom : atoms)
        if (atom.name == name) candidates.push_back(atom.position);
    std::stable_sort(candidates.begin(), candidates.end(), [&](const Vec3& a, const Vec3& b) {
        return SquareDistance(a, middle) < SquareDistance(b, middle);
    });
    if (candidates.size() > kMostCandidates) candidates.resize(kMostCandidates);
    return candidates;
}

AtomSurroundings InStructure(const std::vector<PlacedAtom>& atoms, const PlacedAtom& species) {
    std::vector<Site> sites;
    for (const Vec3& centre : Candidates(atoms, species.name)) sites.push_back(SiteOf(atoms, centre));
    Site best = *std::max_element(sites.begin(), sites.end(),
                                  [](const Site& a, const Site& b) { return a.crowd < b.crowd; });
    const Site reference = best;
    for (const Site& site : sites)
        if (AlikeNearby(reference, site)) Complete(best, site);
    const auto weight = std::count_if(atoms.begin(), atoms.end(),
                                      [&](const PlacedAtom& atom) { return atom.name == species.name; });
    return InAtomicUnits(best, species, static_cast<double>(weight));
}

/// Every name takes a field of its own, and a phase-shift file has no room for more.
void CheckNames(const Cluster& cluster) {
    std::set<std::string> names;
    for (const Structure& structure : cluster.structures)
        for (const ClusterAtom& atom : structure.atoms) names.insert(atom.name);
    if (names.size() > kMostPhaseShiftRecords)
        throw ZfError("The atoms of the cluster have " + std::to_string(names.size()) +
                      " names, and there is room for the phase shifts of " +
                      std::to_string(kMostPhaseShiftRecords) +
                      ": give atoms with like surroundings one name");
}

bool Known(const std::vector<AtomSurroundings>& species, const std::string& name) {
    return std::any_of(species.begin(), species.end(),
                       [&](const AtomSurroundings& known) { return known.name == name; });
}

/// The atoms of a crystal that can be neighbours of one at `centre`, angstrom.
std::vector<PlacedAtom> AtomsAround(const CrystalCell& cell, const gemmi::Vec3& centre) {
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    std::vector<PlacedAtom> atoms;
    for (const CellAtom& atom : cell.atoms) {
        const CellBox box(reciprocal, reciprocal.multiply(centre) - atom.fractional, kSurroundingsReach);
        for (int i = box.first[0]; i <= box.last[0]; ++i)
            for (int j = box.first[1]; j <= box.last[1]; ++j)
                for (int k = box.first[2]; k <= box.last[2]; ++k) {
                    const gemmi::Vec3 p = cell.Position(atom, i, j, k);
                    atoms.push_back({atom.element, atom.element, {p.x, p.y, p.z}});
                }
    }
    return atoms;
}

}  // namespace

double AtomSurroundings::NearestDistance() const {
    double nearest = 0.0;
    for (const AtomShell& shell : shells)
        if (nearest == 0.0 || shell.distance < nearest) nearest = shell.distance;
    if (nearest == 0.0) throw ZfError("There are no neighbours around \"" + name + "\"");
    return nearest;
}

std::vector<AtomSurroundings> SurroundingsInCrystal(const CrystalCell& cell) {
    CheckCell(cell);
    std::vector<AtomSurroundings> list;
    for (const CellAtom& atom : cell.atoms) {
        if (Known(list, atom.element)) continue;
        const auto weight = std::count_if(cell.atoms.begin(), cell.atoms.end(), [&](const CellAtom& other) {
            return other.element == atom.element;
        });
        const gemmi::Vec3 p = cell.Position(atom);
        const PlacedAtom placed{atom.element, atom.element, {p.x, p.y, p.z}};
        list.push_back(InAtomicUnits(SiteOf(AtomsAround(cell, p), placed.position), placed,
                                     static_cast<double>(weight)));
    }
    return list;
}

std::vector<AtomSurroundings> SurroundingsInCluster(const Cluster& cluster) {
    CheckNames(cluster);
    std::vector<AtomSurroundings> list;
    for (const Structure& structure : cluster.structures) {
        const std::vector<PlacedAtom> atoms = AtomsOf(structure);
        for (const PlacedAtom& atom : atoms)
            if (!Known(list, atom.name)) list.push_back(InStructure(atoms, atom));
    }
    if (list.empty()) throw ZfError("The cluster holds no atoms");
    return list;
}

}  // namespace qvre
