#include "prepare/cluster/SurfaceSlab.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>
#include <tuple>
#include <utility>

#include "foundation/ZfError.h"
#include "prepare/cluster/CellSymmetry.h"

namespace qvre {

namespace {

double Cross(const gemmi::Vec3& a, const gemmi::Vec3& b) {
    return a.x * b.y - a.y * b.x;
}

double Azimuth_deg(const gemmi::Vec3& v) {
    return gemmi::deg(std::atan2(v.y, v.x));
}

/// Numbers as they compare: equal within 0.001.
long Rounded(double number) {
    return std::lround(number * 1000.0);
}

std::vector<gemmi::Vec3> TranslationsInSurface(const CellSymmetry& symmetry, const SurfaceFrame& frame,
                                               double radius) {
    std::vector<gemmi::Vec3> inSurface;
    for (const gemmi::Vec3& translation : symmetry.TranslationsWithin(radius)) {
        const gemmi::Vec3 v = frame.rotation.multiply(translation);
        if (std::abs(v.z) < kSamePlane_angstrom && v.length() > kSamePlane_angstrom)
            inSurface.emplace_back(v.x, v.y, 0.0);
    }
    return inSurface;
}

std::optional<SurfaceLattice> ShortestOf(const std::vector<gemmi::Vec3>& translations) {
    if (translations.empty()) return std::nullopt;
    const auto order = [](const gemmi::Vec3& v) {
        const double azimuth = Azimuth_deg(v);
        return std::tuple(Rounded(v.length()), Rounded(std::abs(azimuth)), azimuth < 0.0);
    };
    const gemmi::Vec3 first =
        *std::min_element(translations.begin(), translations.end(),
                          [&](const auto& a, const auto& b) { return order(a) < order(b); });
    std::optional<gemmi::Vec3> second;
    const auto orderOfSecond = [&](const gemmi::Vec3& v) {
        return std::tuple(Rounded(v.length()), Rounded(v.dot(first)));
    };
    for (const gemmi::Vec3& v : translations)
        if (Cross(first, v) > 1e-3 * first.length_sq() &&
            (!second || orderOfSecond(v) < orderOfSecond(*second)))
            second = v;
    if (!second) return std::nullopt;
    return SurfaceLattice{first, *second};
}

/// Whole numbers u, v with a u + b v = gcd(a, b), by the algorithm of Euclid.
std::array<int, 2> Bezout(int a, int b) {
    std::array<int, 2> factors = {1, 0};  // of the remainder before the last one, and of the last one
    std::array<int, 2> next = {0, 1};
    while (b != 0) {
        const int quotient = a / b;
        factors = std::exchange(next, {factors[0] - quotient * next[0], factors[1] - quotient * next[1]});
        a = std::exchange(b, a - quotient * b);
    }
    if (a < 0) return {-factors[0], -factors[1]};
    return factors;
}

/// A translation of the crystal from the surface to that one period above, in fractions.
gemmi::Vec3 StepUp(const std::array<int, 3>& hkl) {
    const auto [u, v] = Bezout(hkl[0], hkl[1]);
    const int inner = hkl[0] * u + hkl[1] * v;
    const auto [s, t] = Bezout(inner, hkl[2]);
    return {static_cast<double>(u * s), static_cast<double>(v * s), static_cast<double>(t)};
}

/// The cell in which a place lies; what is on the edge of two belongs to the upper one.
std::array<double, 2> CellOfPlace(const gemmi::Vec3& v, const SurfaceLattice& lattice) {
    constexpr double kEdge = 1e-6;
    const gemmi::Vec3 f = FractionsOf(v, lattice);
    return {std::floor(f.x + kEdge), std::floor(f.y + kEdge)};
}

}  // namespace

double SurfaceSlab::Top() const {
    double top = -std::numeric_limits<double>::infinity();
    for (const SlabAtom& atom : atoms)
        if (atom.layer > 0) top = std::max(top, atom.position.z);
    return top;
}

gemmi::Vec3 SurfaceSlab::Shortest(const gemmi::Vec3& v) const {
    const gemmi::Vec3 f = FractionsOf(v, lattice);
    const gemmi::Vec3 near = v - lattice[0] * std::round(f.x) - lattice[1] * std::round(f.y);
    gemmi::Vec3 shortest = near;
    for (int i = -1; i <= 1; ++i)
        for (int j = -1; j <= 1; ++j) {
            const gemmi::Vec3 other = near + lattice[0] * i + lattice[1] * j;
            if (other.length_sq() < shortest.length_sq() - 1e-9) shortest = other;
        }
    return shortest;
}

gemmi::Vec3 FractionsOf(const gemmi::Vec3& v, const SurfaceLattice& lattice) {
    const double area = Cross(lattice[0], lattice[1]);
    return {Cross(v, lattice[1]) / area, Cross(lattice[0], v) / area, 0.0};
}

SurfaceLattice LatticeOfSurface(const CrystalCell& cell, const SurfaceFrame& frame) {
    constexpr double kFarthest_angstrom = 100.0;
    const CellSymmetry symmetry(cell);
    for (double radius = 6.0; radius < kFarthest_angstrom; radius *= 1.6)
        // The second may be longer than what is found first; twice as far nothing shorter is left.
        if (const auto found = ShortestOf(TranslationsInSurface(symmetry, frame, radius)))
            if (const auto lattice = ShortestOf(TranslationsInSurface(
                    symmetry, frame, std::max((*found)[0].length(), (*found)[1].length()) + 0.1)))
                return *lattice;
    throw ZfError("The cell of this surface is too large to build on: give lower Miller indices");
}

SlabSites SitesBelow(const CrystalCell& cell, const std::array<int, 3>& hkl, const SurfaceFrame& frame,
                     const Termination& termination, double depth_angstrom, int leastLayers) {
    const int divisor = std::gcd(std::gcd(hkl[0], hkl[1]), hkl[2]);
    const gemmi::Vec3 up = StepUp({hkl[0] / divisor, hkl[1] / divisor, hkl[2] / divisor});
    const std::size_t count = frame.planes.size();
    const auto periods =
        static_cast<std::size_t>(depth_angstrom / frame.period) + static_cast<std::size_t>(leastLayers) + 3;
    const std::size_t topmost = termination.topmost % count + periods * count;
    const bool endsBelow = frame.GapAbove(topmost) > kVacuum_angstrom;
    const SurfaceLattice lattice = LatticeOfSurface(cell, frame);
    const gemmi::Mat33 toFractions = cell.Reciprocal().multiply(frame.rotation.transpose());
    SlabSites sites;
    sites.lattice = {toFractions.multiply(lattice[0]), toFractions.multiply(lattice[1])};

    SurfaceSlab slab;  // as far as the planes above reach
    slab.lattice = lattice;
    std::optional<gemmi::Vec3> origin;
    int layer = 1;
    for (std::size_t plane = topmost; plane > 0; --plane) {
        const double height = frame.HeightOf(plane) - frame.HeightOf(topmost);
        if (endsBelow && plane + count == topmost) break;
        if (plane != topmost && frame.IsTopOfLayer(plane)) {
            if (-height > depth_angstrom && layer >= leastLayers) break;
            ++layer;
        }
        const std::size_t first = slab.atoms.size();
        for (const std::size_t index : frame.planes[plane % count].atoms) {
            const CellAtom& atom = cell.atoms[index];
            const double below = frame.HeightOf(plane) - frame.rotation.multiply(cell.Position(atom)).z;
            gemmi::Vec3 offset = up * std::round(below / frame.period);
            const gemmi::Vec3 p = frame.rotation.multiply(cell.axes.multiply(atom.fractional + offset));
            const auto isKnown = [&](const SlabAtom& known) {
                const gemmi::Vec3 apart = p - known.position;
                return known.element == atom.element &&
                       slab.Shortest({apart.x, apart.y, 0.0}).length() < kSamePlane_angstrom;
            };
            if (std::any_of(slab.atoms.begin() + static_cast<std::ptrdiff_t>(first), slab.atoms.end(),
                            isKnown))
                continue;
            if (!origin) origin = p;
            const auto [i, j] = CellOfPlace(p - *origin, lattice);
            offset = offset - sites.lattice[0] * i - sites.lattice[1] * j;
            slab.atoms.push_back({atom.element, p, 0.0, layer});
            sites.atoms.push_back({index, offset, layer});
        }
    }
    return sites;
}

SurfaceSlab SlabOf(const CrystalCell& cell, const std::array<int, 3>& hkl, const SlabSites& sites) {
    const gemmi::Mat33 toFrame = SurfaceFrame(cell, hkl).rotation.multiply(cell.axes);
    const auto fractions = [&](const SlabSite& atom) {
        return cell.atoms[atom.site].fractional + atom.offset;
    };
    SurfaceSlab slab;
    for (std::size_t i = 0; i < 2; ++i) {
        slab.lattice.at(i) = toFrame.multiply(sites.lattice.at(i));
        slab.lattice.at(i).z = 0.0;
    }
    for (const SlabSite& atom : sites.atoms) {
        const CellAtom& same = cell.atoms[atom.site];
        const gemmi::Vec3 p = toFrame.multiply(fractions(atom) - fractions(sites.atoms.front()));
        slab.atoms.push_back({same.element, p, same.Uiso_angstrom2, atom.layer});
    }
    return slab;
}

SurfaceSlab SlabBelow(const CrystalCell& cell, const std::array<int, 3>& hkl, const SurfaceFrame& frame,
                      const Termination& termination, double depth_angstrom, int leastLayers) {
    return SlabOf(cell, hkl, SitesBelow(cell, hkl, frame, termination, depth_angstrom, leastLayers));
}

SurfaceSlab Repeated(const SurfaceSlab& slab, const Superstructure& superstructure) {
    SurfaceSlab larger;
    larger.lattice = superstructure.Of(slab.lattice);
    const std::vector<std::array<int, 2>> cells = superstructure.CellsInside();
    for (const SlabAtom& atom : slab.atoms)
        for (const auto& [i, j] : cells) {
            larger.atoms.push_back(atom);
            larger.atoms.back().position = atom.position + slab.lattice[0] * i + slab.lattice[1] * j;
        }
    return larger;
}

CrystalCell CellOf(const SurfaceSlab& slab) {
    constexpr double kEmpty_angstrom = 12.0;
    const auto [lowest, highest] =
        std::minmax_element(slab.atoms.begin(), slab.atoms.end(),
                            [](const SlabAtom& a, const SlabAtom& b) { return a.position.z < b.position.z; });
    const double bottom = lowest->position.z;
    const auto& [a, b] = slab.lattice;
    CrystalCell cell;
    cell.axes =
        gemmi::Mat33(a.x, b.x, 0.0, a.y, b.y, 0.0, 0.0, 0.0, highest->position.z - bottom + kEmpty_angstrom);
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    for (const SlabAtom& atom : slab.atoms) {
        const gemmi::Vec3 p(atom.position.x, atom.position.y, atom.position.z - bottom);
        cell.atoms.push_back({atom.element, reciprocal.multiply(p), atom.Uiso_angstrom2});
    }
    return cell;
}

}  // namespace qvre
