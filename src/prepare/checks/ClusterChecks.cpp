#include <algorithm>
#include <cmath>
#include <vector>

#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/checks/FindingTexts.h"
#include "prepare/checks/NearestNeighbours.h"
#include "prepare/checks/PartChecks.h"
#include "prepare/thermal/Elements.h"

namespace qvre {

namespace {

constexpr double kEmitterTolerance_angstrom = 0.01;
constexpr double kNearest_angstrom = 0.5;

void CheckEmitter(const std::vector<ClusterAtom>& atoms, const std::string& where, InputFindings& findings) {
    const ClusterAtom& emitter = atoms[NearestToOrigin(atoms)];
    if (std::sqrt(NormSquared(emitter.position)) * 1e10 < kEmitterTolerance_angstrom) return;
    findings.push_back({Severity::kMisfit,
                        where + "the atom nearest to the origin, " + emitter.name + " at " +
                            PositionText(emitter) + " angstrom, would be the emitter",
                        "move the cluster so that the emitter stands at (0, 0, 0)"});
}

void CheckDistances(const std::vector<ClusterAtom>& atoms, const std::string& where,
                    InputFindings& findings) {
    if (atoms.size() == 1) {
        findings.push_back({Severity::kNote, where + "the emitter stands alone: nothing scatters",
                            "add the atoms around it"});
        return;
    }
    const std::vector<Neighbour> nearest = NearestNeighbours(atoms);
    const auto closest = std::min_element(
        nearest.begin(), nearest.end(),
        [](const Neighbour& a, const Neighbour& b) { return a.distance_angstrom < b.distance_angstrom; });
    if (closest->distance_angstrom > kNearest_angstrom) return;
    const ClusterAtom& one = atoms[static_cast<std::size_t>(closest - nearest.begin())];
    const ClusterAtom& other = atoms[closest->atom];
    findings.push_back({Severity::kMisfit,
                        where + "two atoms stand " + DoubleToText(closest->distance_angstrom) +
                            " angstrom apart, " + one.name + " at " + PositionText(one) + " and " +
                            other.name + " at " + PositionText(other),
                        "atoms have to be more than 0.5 angstrom apart: remove one, or look at the lattice "
                        "constant"});
}

bool IsElement(const std::string& symbol) {
    try {
        return AtomicNumberOf(symbol) > 0;
    } catch (const ZfError&) {
        return symbol.empty();  // an atom without an element still scatters
    }
}

void CheckElements(const Cluster& cluster, InputFindings& findings) {
    for (const std::string& element : ElementsOf(cluster))
        if (!IsElement(element))
            findings.push_back(
                {Severity::kMisfit, "the cluster holds the element \"" + element + "\", unknown",
                 "write element symbols as in Cu, case counts; a label of its own belongs into "
                 "the name of the atom"});
}

void CheckDisplacementForm(const std::vector<ClusterAtom>& atoms, const std::string& where,
                           InputFindings& findings) {
    const auto tensors =
        std::count_if(atoms.begin(), atoms.end(), [](const ClusterAtom& atom) { return atom.U.Count() > 1; });
    if (tensors == 0) return;
    findings.push_back({Severity::kMisfit,
                        where + "atoms with anisotropic displacements: " + std::to_string(tensors),
                        "give isotropic ones (MSD_iso), or none"});
}

}  // namespace

void CheckCluster(const InputSet& inputs, InputFindings& findings) {
    const Cluster& cluster = *inputs.cluster;
    if (cluster.structures.empty())
        findings.push_back({Severity::kMisfit, "the cluster holds no structure", "give one with atoms"});
    CheckElements(cluster, findings);
    for (std::size_t s = 0; s < cluster.structures.size(); ++s) {
        const std::vector<ClusterAtom>& atoms = cluster.structures[s].atoms;
        const std::string where = StructurePrefix(cluster, s);
        if (atoms.empty()) {
            findings.push_back({Severity::kMisfit, where + "there are no atoms", "remove the structure"});
            continue;
        }
        CheckEmitter(atoms, where, findings);
        CheckDistances(atoms, where, findings);
        CheckDisplacementForm(atoms, where, findings);
    }
}

}  // namespace qvre
