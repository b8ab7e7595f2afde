#include "prepare/checks/NearestNeighbours.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qvre {

std::vector<Neighbour> NearestNeighbours(const std::vector<ClusterAtom>& atoms) {
    std::vector<Neighbour> nearest(atoms.size(), {0, std::numeric_limits<double>::infinity()});
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const double* a = atoms[i].position.Data();
        for (std::size_t j = i + 1; j < atoms.size(); ++j) {
            const double* b = atoms[j].position.Data();
            const double dx = b[0] - a[0];
            const double dy = b[1] - a[1];
            const double dz = b[2] - a[2];
            const double distance = std::sqrt(dx * dx + dy * dy + dz * dz) * 1e10;
            if (distance < nearest[i].distance_angstrom) nearest[i] = {j, distance};
            if (distance < nearest[j].distance_angstrom) nearest[j] = {i, distance};
        }
    }
    return nearest;
}

std::size_t NearestToOrigin(const std::vector<ClusterAtom>& atoms) {
    const auto nearer = [](const ClusterAtom& a, const ClusterAtom& b) {
        return NormSquared(a.position) < NormSquared(b.position);
    };
    return static_cast<std::size_t>(std::min_element(atoms.begin(), atoms.end(), nearer) - atoms.begin());
}

}  // namespace qvre
