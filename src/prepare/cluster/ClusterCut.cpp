#include "prepare/cluster/ClusterCut.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kSameShell_angstrom = 1e-4;
constexpr double kBeyondSize_angstrom = 1e-3;

/// Exactly 0 for what rounding leaves of it.
gemmi::Vec3 Clean(const gemmi::Vec3& v) {
    constexpr double kRounding_angstrom = 1e-9;
    const auto clean = [](double length) { return std::abs(length) < kRounding_angstrom ? 0.0 : length; };
    return {clean(v.x), clean(v.y), clean(v.z)};
}

double SizeOf(ClusterShape shape, const gemmi::Vec3& position, double top) {
    if (shape == ClusterShape::kParaboloid) return position.length() + (top - position.z);
    return (position - gemmi::Vec3(0.0, 0.0, top)).length();
}

double VolumeOf(ClusterShape shape, double size, double top) {
    if (shape == ClusterShape::kHemisphere) return 2.0 / 3.0 * gemmi::pi() * size * size * size;
    return size > top ? gemmi::pi() / 4.0 * (size * size - top * top) * (size + top) : 0.0;
}

double AtomsPerVolume(const CrystalCell& cell) {
    return static_cast<double>(cell.atoms.size()) / std::abs(cell.axes.determinant());
}

/// Adds the atoms of one site, cell by cell.
void AddSite(const HalfCrystal& half, ClusterShape shape, double size, std::size_t site,
             std::vector<CutAtom>& atoms) {
    const CrystalCell& cell = *half.cell;
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    const gemmi::Vec3 emitter = cell.Position(cell.atoms[half.emitter]);
    const bool aroundSurface = shape == ClusterShape::kHemisphere;
    const gemmi::Vec3 centre = emitter + half.rotation.row_copy(2) * (aroundSurface ? half.bounds.top : 0.0);
    const CellBox box(reciprocal, reciprocal.multiply(centre) - cell.atoms[site].fractional, size);
    for (int i = box.first[0]; i <= box.last[0]; ++i)
        for (int j = box.first[1]; j <= box.last[1]; ++j)
            for (int k = box.first[2]; k <= box.last[2]; ++k) {
                const gemmi::Vec3 p =
                    half.rotation.multiply(cell.Position(cell.atoms[site], i, j, k) - emitter);
                if (p.z > half.bounds.top + kSamePlane_angstrom ||
                    p.z < half.bounds.bottom - kSamePlane_angstrom)
                    continue;
                const double atomSize = SizeOf(shape, p, half.bounds.top);
                const bool isEmitter = p.length() < kSamePlane_angstrom;
                if (isEmitter || atomSize > size) continue;
                atoms.push_back({{site, {i, j, k}}, Clean(p), atomSize});
            }
}

/// All atoms but the emitter of at most this size.
std::vector<CutAtom> AtomsWithin(const HalfCrystal& half, ClusterShape shape, double size) {
    if (VolumeOf(shape, size, half.bounds.top) * AtomsPerVolume(*half.cell) > 1.5 * kMostAtoms)
        throw ZfError("The cluster would have more than " + std::to_string(kMostAtoms) +
                      " atoms: ask for a smaller one");
    std::vector<CutAtom> atoms;
    for (std::size_t site = 0; site < half.cell->atoms.size(); ++site)
        AddSite(half, shape, size, site, atoms);
    return atoms;
}

struct Shell {
    double size;  // of its last atom
    int atoms;    // in the cluster that it completes, emitter included
};

std::vector<Shell> ShellsOf(const std::vector<CutAtom>& atoms) {
    std::vector<double> sizes;
    sizes.reserve(atoms.size());
    for (const CutAtom& atom : atoms) sizes.push_back(atom.size);
    std::sort(sizes.begin(), sizes.end());
    std::vector<Shell> shells;
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        const bool last = i + 1 == sizes.size() || sizes[i + 1] - sizes[i] > kSameShell_angstrom;
        if (last) shells.push_back({sizes[i], static_cast<int>(i) + 2});
    }
    return shells;
}

/// The size of the smallest shell: searched outwards, as the first atom may be far from the surface point.
double SmallestShell(const HalfCrystal& half, ClusterShape shape) {
    for (double size = half.bounds.top + 2.0;; size *= 1.5) {
        const std::vector<Shell> shells = ShellsOf(AtomsWithin(half, shape, size));
        if (!shells.empty()) return shells.front().size;
    }
}

ClusterCut Finish(const HalfCrystal& half, std::vector<CutAtom> atoms, double size) {
    const auto outside = [size](const CutAtom& atom) { return atom.size > size; };
    atoms.erase(std::remove_if(atoms.begin(), atoms.end(), outside), atoms.end());
    SortByDistance(atoms);
    atoms.insert(atoms.begin(), CutAtom{{half.emitter}, gemmi::Vec3(), 0.0});
    if (atoms.size() > kMostAtoms)
        throw ZfError("The cluster would have " + std::to_string(atoms.size()) + " atoms; more than " +
                      std::to_string(kMostAtoms) + " are not made");
    return {std::move(atoms), size};
}

}  // namespace

ClusterCut CutBySize(const HalfCrystal& half, ClusterShape shape, double size) {
    // A little further, so that the last shell is seen whole.
    std::vector<CutAtom> atoms = AtomsWithin(half, shape, size + 2.0 * kBeyondSize_angstrom);
    double whole = -1.0;
    for (const Shell& shell : ShellsOf(atoms))
        if (shell.size <= size + kBeyondSize_angstrom) whole = shell.size;
    if (whole < 0.0)
        throw ZfError(fmt::format(
            "No whole shell of atoms lies within {:.3f} angstrom: the smallest needs {:.3f} angstrom", size,
            SmallestShell(half, shape)));
    return Finish(half, std::move(atoms), whole);
}

ClusterCut CutOfAtoms(const HalfCrystal& half, ClusterShape shape, const std::vector<SiteInCell>& atoms) {
    const CrystalCell& cell = *half.cell;
    const gemmi::Vec3 emitter = cell.Position(cell.atoms[half.emitter]);
    ClusterCut cut;
    for (const SiteInCell& atom : atoms) {
        const auto& [i, j, k] = atom.cell;
        const gemmi::Vec3 p = half.rotation.multiply(cell.Position(cell.atoms[atom.site], i, j, k) - emitter);
        cut.atoms.push_back({atom, Clean(p), SizeOf(shape, p, half.bounds.top)});
        cut.size = std::max(cut.size, cut.atoms.back().size);
    }
    return cut;
}

void SortByDistance(std::vector<CutAtom>& atoms) {
    const auto key = [](const CutAtom& atom) {
        const gemmi::Vec3& p = atom.position;
        return std::nearbyint((p.x * p.x + p.y * p.y + p.z * p.z) * 1e6);
    };
    std::stable_sort(atoms.begin(), atoms.end(),
                     [&](const CutAtom& a, const CutAtom& b) { return key(a) < key(b); });
}

double SizeOfVolume(ClusterShape shape, double volume, double top) {
    double size = std::max(3.0, top);
    while (VolumeOf(shape, size, top) < volume) size *= 1.02;
    return size;
}

ClusterCut CutByCount(const HalfCrystal& half, ClusterShape shape, int atoms) {
    if (atoms > kMostAtoms) throw ZfError("More than " + std::to_string(kMostAtoms) + " atoms are not made");
    double reach = SizeOfVolume(shape, atoms / AtomsPerVolume(*half.cell), half.bounds.top);
    while (true) {
        reach *= 1.05;
        std::vector<CutAtom> all = AtomsWithin(half, shape, reach);
        std::vector<Shell> shells = ShellsOf(all);
        if (!shells.empty() && shells.back().size > reach - kBeyondSize_angstrom) shells.pop_back();
        if (shells.empty() || shells.back().atoms < atoms) continue;
        const auto best = std::min_element(shells.begin(), shells.end(), [&](const Shell& a, const Shell& b) {
            return std::abs(a.atoms - atoms) < std::abs(b.atoms - atoms);
        });
        return Finish(half, std::move(all), best->size);
    }
}

}  // namespace qvre
