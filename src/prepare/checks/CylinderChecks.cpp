#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>
#include <set>

#include "foundation/Text.h"
#include "prepare/checks/FindingTexts.h"
#include "prepare/checks/PartChecks.h"

namespace qvre {

namespace {

constexpr double kTie = 1e-6;  // relative to the radius

/// An atom as the cylinder sees it: metres.
struct Place {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double square = 0.0;
    double radiusSquare = 0.0;  // 0: not known
};

struct Ties {
    std::size_t count = 0;
    std::size_t atom = 0;  // of the first, in the order of distance
    std::size_t target = 0;
};

using Radii = std::map<std::string, double>;

/// By atom name, in metres: the first record of the name and the energy counts.
Radii RadiiAt(const ZfPhaseShiftDocument& document, double energy) {
    Radii radii;
    for (const PhaseShiftRecord& record : document.records)
        if (record.Ek_eV == energy && !record.radial.LnX.empty())
            radii.emplace(record.AtomName, std::exp(record.radial.LnX.back()));
    return radii;
}

/// Indices of the atoms by their distance from the origin, where the cylinders begin.
std::vector<std::size_t> ByDistance(const std::vector<ClusterAtom>& atoms) {
    std::vector<std::size_t> order(atoms.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return NormSquared(atoms[a].position) < NormSquared(atoms[b].position);
    });
    return order;
}

std::vector<Place> PlacesOf(const std::vector<ClusterAtom>& atoms, const std::vector<std::size_t>& order,
                            const Radii& radii) {
    std::vector<Place> places;
    for (const std::size_t atom : order) {
        const double* p = atoms[atom].position.Data();
        const auto radius = radii.find(atoms[atom].name);
        const double square = radius == radii.end() ? 0.0 : radius->second * radius->second;
        places.push_back({p[0], p[1], p[2], p[0] * p[0] + p[1] * p[1] + p[2] * p[2], square});
    }
    return places;
}

/// All pairs of a target and an atom before it, the emitter excepted.
Ties FindTies(const std::vector<Place>& places) {
    Ties ties;
    for (std::size_t target = 2; target < places.size(); ++target) {
        const Place& p = places[target];
        for (std::size_t i = 1; i < target; ++i) {
            const Place& r = places[i];
            const double along = r.x * p.x + r.y * p.y + r.z * p.z;
            const double edge = r.radiusSquare * p.square;
            const double excess = r.square * p.square - along * along - edge;
            if (along < 0.0 || !(std::abs(excess) < 2.0 * kTie * edge)) continue;
            if (ties.count++ == 0) ties = {1, i, target};
        }
    }
    return ties;
}

}  // namespace

void CheckCylinders(const InputSet& inputs, InputFindings& findings) {
    if (inputs.method != kMulti) return;
    std::set<Radii> seen;  // energies with the same radii have the same ties
    for (const EmittedWave& wave : *inputs.waves) {
        const Radii radii = RadiiAt(*inputs.phaseShifts, wave.Ek);
        if (!seen.insert(radii).second) continue;
        for (std::size_t s = 0; s < inputs.cluster->structures.size(); ++s) {
            const std::vector<ClusterAtom>& atoms = inputs.cluster->structures[s].atoms;
            const std::vector<std::size_t> order = ByDistance(atoms);
            const Ties ties = FindTies(PlacesOf(atoms, order, radii));
            if (ties.count == 0) continue;
            const ClusterAtom& atom = atoms[order[ties.atom]];
            const ClusterAtom& target = atoms[order[ties.target]];
            findings.push_back(
                {Severity::kWarning,
                 fmt::format("{}{} times an atom stands its radius beside the line to another, to a "
                             "millionth, as {} at {} with {} angstrom beside that to {} at {}: rounding "
                             "decides whether MULTI takes it, and the symmetry may be lost",
                             StructurePrefix(*inputs.cluster, s), ties.count, atom.name, PositionText(atom),
                             DoubleToText(radii.at(atom.name) * 1e10), target.name, PositionText(target)),
                 "let LnX end 0.01 percent further out, as in phase shifts made without a radius"});
        }
    }
}

}  // namespace qvre
