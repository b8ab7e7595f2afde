#include "prepare/cluster/EqualStructures.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace qvre {

namespace {

bool IsSameAtom(const ClusterAtom& a, const ClusterAtom& b, double tolerance_m) {
    constexpr double kSameU_m2 = 1e-26;
    if (a.atom != b.atom || a.U.Count() != b.U.Count()) return false;
    for (int i = 0; i < 3; ++i)
        if (std::abs(a.position.Data()[i] - b.position.Data()[i]) > tolerance_m) return false;
    return a.U.Count() == 0 || std::abs(a.U.Data()[0] - b.U.Data()[0]) < kSameU_m2;
}

}  // namespace

bool HaveSameAtoms(const std::vector<ClusterAtom>& a, const std::vector<ClusterAtom>& b,
                   double tolerance_angstrom) {
    const double tolerance_m = tolerance_angstrom * 1e-10;
    if (a.size() != b.size()) return false;
    // By distance from the emitter, of which there are several at one.
    const auto distance = [](const ClusterAtom& atom) {
        const double* p = atom.position.Data();
        return std::sqrt(p[0] * p[0] + p[1] * p[1] + p[2] * p[2]);
    };
    std::vector<std::pair<double, const ClusterAtom*>> others;
    others.reserve(b.size());
    for (const ClusterAtom& atom : b) others.emplace_back(distance(atom), &atom);
    std::sort(others.begin(), others.end());
    return std::all_of(a.begin(), a.end(), [&](const ClusterAtom& atom) {
        const double here = distance(atom);
        auto other = std::lower_bound(others.begin(), others.end(), here - 2.0 * tolerance_m,
                                      [](const auto& known, double least) { return known.first < least; });
        for (; other != others.end() && other->first < here + 2.0 * tolerance_m; ++other)
            if (IsSameAtom(atom, *other->second, tolerance_m)) return true;
        return false;
    });
}

}  // namespace qvre
