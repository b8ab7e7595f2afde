#include "prepare/cluster/SurfaceDomains.h"

#include <algorithm>
#include <cmath>

namespace qvre {

namespace {

std::vector<gemmi::Mat33> PointGroup(const CrystalCell& cell, double tolerance_angstrom) {
    std::vector<gemmi::Mat33> group;
    for (const SurfaceOperation& operation :
         CellSymmetry(cell, tolerance_angstrom).KeepingNormal(gemmi::Mat33())) {
        const gemmi::Mat33 matrix = MatrixOf(operation);
        if (std::none_of(group.begin(), group.end(),
                         [&](const gemmi::Mat33& known) { return known.approx(matrix, 1e-3); }))
            group.push_back(matrix);
    }
    return group;
}

ClusterDomain DomainOf(const gemmi::Mat33& matrix) {
    ClusterDomain domain;
    domain.isMirrored = matrix.determinant() < 0.0;
    const double turn = gemmi::deg(std::atan2(matrix[1][0], matrix[0][0]));
    domain.turn_deg = std::round((turn < -1e-3 ? turn + 360.0 : turn) * 1e6) / 1e6 + 0.0;
    return domain;
}

}  // namespace

gemmi::Mat33 MatrixOf(const SurfaceOperation& operation) {
    const double angle_deg = operation.isMirror ? 2.0 * operation.angle_deg : operation.angle_deg;
    const double c = std::cos(gemmi::rad(angle_deg));
    const double s = std::sin(gemmi::rad(angle_deg));
    if (operation.isMirror) return {c, s, 0.0, s, -c, 0.0, 0.0, 0.0, 1.0};
    return {c, -s, 0.0, s, c, 0.0, 0.0, 0.0, 1.0};
}

std::vector<ClusterDomain> DomainsOf(const CrystalCell& substrate, const CrystalCell& structure,
                                     double tolerance_angstrom) {
    const std::vector<gemmi::Mat33> own = PointGroup(structure, tolerance_angstrom);
    std::vector<gemmi::Mat33> covered;
    std::vector<ClusterDomain> domains;
    // The operations come with the turns before the mirrors, the identity first.
    for (const gemmi::Mat33& operation : PointGroup(substrate, CellSymmetry::kSamePlace_angstrom)) {
        if (std::any_of(covered.begin(), covered.end(),
                        [&](const gemmi::Mat33& known) { return known.approx(operation, 1e-3); }))
            continue;
        domains.push_back(DomainOf(operation));
        for (const gemmi::Mat33& kept : own) covered.push_back(operation.multiply(kept));
    }
    return domains;
}

}  // namespace qvre
