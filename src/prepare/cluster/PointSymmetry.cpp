#include "prepare/cluster/PointSymmetry.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <tuple>

#include "foundation/Constants.h"

namespace qvre {

namespace {

constexpr double kSamePlace_angstrom = 0.01;

using PlanePoint = std::complex<double>;  // x + iy, angstrom

/// Atoms of one element at one height and one distance from the axis: an operation keeps it as a whole.
using Ring = std::vector<PlanePoint>;

struct RingAtom {
    std::string element;
    double z;
    double fromAxis;
    PlanePoint place;
};

std::vector<RingAtom> RingAtoms(const std::vector<ClusterAtom>& atoms) {
    std::vector<RingAtom> result;
    for (const ClusterAtom& atom : atoms) {
        const double* p = atom.position.Data();
        const PlanePoint place(p[0] * 1e10, p[1] * 1e10);
        result.push_back({atom.atom, p[2] * 1e10, std::abs(place), place});
    }
    return result;
}

/// Equal heights become the same number, that of the lowest, so that a sort by them keeps planes together.
void JoinHeights(std::vector<RingAtom>& atoms) {
    std::sort(atoms.begin(), atoms.end(), [](const RingAtom& a, const RingAtom& b) { return a.z < b.z; });
    double former = 0.0;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const double own = atoms[i].z;
        if (i > 0 && own - former < kSamePlace_angstrom) atoms[i].z = atoms[i - 1].z;
        former = own;
    }
}

std::vector<Ring> RingsOf(const std::vector<ClusterAtom>& structure) {
    std::vector<RingAtom> atoms = RingAtoms(structure);
    JoinHeights(atoms);
    std::sort(atoms.begin(), atoms.end(), [](const RingAtom& a, const RingAtom& b) {
        return std::tie(a.element, a.z, a.fromAxis) < std::tie(b.element, b.z, b.fromAxis);
    });
    std::vector<Ring> rings;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        const bool same = i > 0 && atoms[i].element == atoms[i - 1].element && atoms[i].z == atoms[i - 1].z &&
                          atoms[i].fromAxis - atoms[i - 1].fromAxis < kSamePlace_angstrom;
        if (!same) rings.emplace_back();
        rings.back().push_back(atoms[i].place);
    }
    return rings;
}

template <class Operation>
bool Keeps(const std::vector<Ring>& rings, Operation operation) {
    return std::all_of(rings.begin(), rings.end(), [&](const Ring& ring) {
        return std::all_of(ring.begin(), ring.end(), [&](const PlanePoint& place) {
            const PlanePoint image = operation(place);
            return std::any_of(ring.begin(), ring.end(), [&](const PlanePoint& other) {
                return std::abs(image - other) < kSamePlace_angstrom;
            });
        });
    });
}

int RotationOrder(const std::vector<Ring>& rings) {
    for (const int order : {6, 4, 3, 2}) {
        const PlanePoint turn = std::polar(1.0, 2.0 * kPi / order);
        if (Keeps(rings, [turn](const PlanePoint& place) { return turn * place; })) return order;
    }
    return 1;
}

/// A mirror plane sends an atom of a ring to one of the same ring, which leaves few to try.
std::optional<double> SmallestMirror(const std::vector<Ring>& rings, const Ring& ring) {
    std::optional<double> smallest;
    for (const PlanePoint& other : ring) {
        double angle = (std::arg(ring.front()) + std::arg(other)) / 2.0;
        angle -= kPi * std::floor(angle / kPi + 1e-6);
        const PlanePoint twice = std::polar(1.0, 2.0 * angle);
        if (smallest && angle >= *smallest) continue;
        if (Keeps(rings, [twice](const PlanePoint& place) { return twice * std::conj(place); }))
            smallest = angle;
    }
    return smallest;
}

}  // namespace

std::string PointSymmetry::Name() const {
    if (order == 0) return "infinite";
    if (!mirror_deg) return std::to_string(order);
    if (order == 1) return "m";
    return std::to_string(order) + (order % 2 == 0 ? "mm" : "m");
}

PointSymmetry FindPointSymmetry(const std::vector<ClusterAtom>& atoms) {
    const std::vector<Ring> rings = RingsOf(atoms);
    const Ring* smallest = nullptr;
    for (const Ring& ring : rings)
        if (std::abs(ring.front()) > kSamePlace_angstrom &&
            (smallest == nullptr || ring.size() < smallest->size()))
            smallest = &ring;
    PointSymmetry symmetry;
    if (smallest == nullptr) {
        symmetry.order = 0;
        return symmetry;
    }
    symmetry.order = RotationOrder(rings);
    const std::optional<double> mirror = SmallestMirror(rings, *smallest);
    // Without what rounding leaves of 0.
    if (mirror) symmetry.mirror_deg = std::max(0.0, std::round(Degrees(*mirror) * 1e9) / 1e9);
    return symmetry;
}

}  // namespace qvre
