#include "prepare/emission/EmitterField.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kAtOrigin = 1e-12;  // m

double SquaredDistance(const ClusterAtom& atom) {
    return NormSquared(atom.position);
}

const ClusterAtom& EmitterOfStructure(const Structure& structure) {
    const auto nearest = std::min_element(
        structure.atoms.begin(), structure.atoms.end(),
        [](const ClusterAtom& a, const ClusterAtom& b) { return SquaredDistance(a) < SquaredDistance(b); });
    if (nearest == structure.atoms.end() || SquaredDistance(*nearest) > kAtOrigin * kAtOrigin)
        throw ZfError("The cluster has no atom at its origin: move the emitter there");
    return *nearest;
}

const AtomSurroundings& SpeciesOf(const PhaseShiftRequest& crystal, const std::string& name) {
    const auto found = std::find_if(crystal.species.begin(), crystal.species.end(),
                                    [&](const AtomSurroundings& species) { return species.name == name; });
    if (found == crystal.species.end()) throw ZfError("There are no atoms of the name \"" + name + "\"");
    return *found;
}

}  // namespace

ClusterAtom EmitterOf(const Cluster& cluster) {
    if (cluster.structures.empty()) throw ZfError("The cluster has no structure");
    const ClusterAtom& first = EmitterOfStructure(cluster.structures[0]);
    for (const Structure& structure : cluster.structures) {
        const ClusterAtom& other = EmitterOfStructure(structure);
        if (other.name != first.name || other.atom != first.atom)
            throw ZfError("The structures of the cluster have different emitters, " + first.name + " and " +
                          other.name + ": make a cluster and an emitted wave of each");
    }
    return first;
}

double SetCrystalField(EmissionRequest& request, const PhaseShiftRequest& crystal, const std::string& name,
                       const ScreeningTable& table) {
    const AtomSurroundings& species = SpeciesOf(crystal, name);
    const double zero = CrystalZero(crystal, MuffinTinSites(crystal, table), request.kinetic_eV);
    const auto field = std::make_shared<SuperposedField>(table, species.element, species.shells);
    const MuffinTinPotential potential{field.get(), crystal.exchange, request.kinetic_eV / kHartree_eV, zero};
    request.potential = [field, potential](double r) { return potential(r); };
    request.radius = MuffinTinRadius(crystal, species) / kBohr_angstrom;
    request.equation = crystal.equation;
    return zero * kHartree_eV;
}

}  // namespace qvre
