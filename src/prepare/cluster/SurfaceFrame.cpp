#include "prepare/cluster/SurfaceFrame.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kSamePlane_angstrom = 0.01;
constexpr double kVacuum_angstrom = 5.0;

gemmi::Vec3 Unit(const gemmi::Vec3& v) {
    const double length = v.length();
    return {v.x / length, v.y / length, v.z / length};
}

gemmi::Vec3 FirstAxisInSurface(const CrystalCell& cell, const gemmi::Vec3& normal) {
    gemmi::Vec3 inSurface;
    for (int i = 0; i < 3; ++i) {
        const gemmi::Vec3 axis = cell.axes.column_copy(i);
        inSurface = axis - normal * axis.dot(normal);
        if (inSurface.length() > 1e-4 * axis.length()) break;
    }
    return Unit(inSurface);
}

std::array<int, 3> LowestTerms(std::array<int, 3> hkl) {
    const int divisor = std::gcd(std::gcd(hkl[0], hkl[1]), hkl[2]);
    if (divisor == 0) throw ZfError("(0 0 0) is no surface: give Miller indices that are not all 0");
    for (int& index : hkl) index /= divisor;
    return hkl;
}

std::vector<AtomicPlane> PlanesOf(const CrystalCell& cell, const gemmi::Vec3& normal, double period) {
    std::vector<std::pair<double, std::size_t>> heights;
    for (std::size_t i = 0; i < cell.atoms.size(); ++i) {
        const double height = cell.Position(cell.atoms[i]).dot(normal);
        double reduced = height - period * std::floor(height / period);
        if (reduced > period - kSamePlane_angstrom) reduced -= period;  // the plane at 0, not one at the end
        heights.emplace_back(reduced, i);
    }
    std::sort(heights.begin(), heights.end());
    std::vector<AtomicPlane> planes;
    for (const auto& [height, atom] : heights) {
        if (planes.empty() || height > planes.back().height + kSamePlane_angstrom)
            planes.push_back({height, {}});
        planes.back().atoms.push_back(atom);
    }
    return planes;
}

/// Height of the plane `index` counted on through the periods.
double HeightOf(const SurfaceFrame& frame, std::size_t index) {
    const std::size_t count = frame.planes.size();
    const std::size_t periods = index / count;
    return frame.planes[index % count].height + frame.period * static_cast<double>(periods);
}

double GapAbove(const SurfaceFrame& frame, std::size_t plane) {
    return HeightOf(frame, plane + 1) - HeightOf(frame, plane);
}

}  // namespace

SurfaceFrame::SurfaceFrame(const CrystalCell& cell, const std::array<int, 3>& hkl) {
    const std::array<int, 3> lowest = LowestTerms(hkl);
    const gemmi::Vec3 reciprocal = cell.Reciprocal().left_multiply(gemmi::Vec3(lowest));
    const gemmi::Vec3 z = Unit(reciprocal);
    const gemmi::Vec3 x = FirstAxisInSurface(cell, z);
    const gemmi::Vec3 y = z.cross(x);
    rotation = gemmi::Mat33(x.x, x.y, x.z, y.x, y.y, y.z, z.x, z.y, z.z);
    period = 1.0 / reciprocal.length();
    planes = PlanesOf(cell, z, period);
    planeOf.resize(cell.atoms.size());
    for (std::size_t plane = 0; plane < planes.size(); ++plane)
        for (const std::size_t atom : planes[plane].atoms) planeOf[atom] = plane;
}

gemmi::Mat33 SurfaceFrame::RotatedBy(double angle_deg) const {
    const double turn = angle_deg - 360.0 * std::floor(angle_deg / 360.0);
    double cosine = std::cos(gemmi::rad(turn));
    double sine = std::sin(gemmi::rad(turn));
    if (turn == 90.0 || turn == 270.0) cosine = 0.0;
    if (turn == 180.0) sine = 0.0;
    return gemmi::Mat33(cosine, -sine, 0.0, sine, cosine, 0.0, 0.0, 0.0, 1.0).multiply(rotation);
}

std::optional<int> LayerInSlab(const SurfaceFrame& frame, std::size_t atom) {
    const std::size_t plane = frame.planeOf[atom];
    for (std::size_t up = 0; up < frame.planes.size(); ++up)
        if (GapAbove(frame, plane + up) > kVacuum_angstrom) return static_cast<int>(up) + 1;
    return std::nullopt;
}

std::optional<CrystalBounds> BoundsForLayer(const SurfaceFrame& frame, std::size_t atom, int layer) {
    const std::optional<int> slabLayer = LayerInSlab(frame, atom);
    if (slabLayer && *slabLayer != layer) return std::nullopt;
    const std::size_t count = frame.planes.size();
    const std::size_t plane = frame.planeOf[atom];
    const std::size_t topmost = plane + static_cast<std::size_t>(layer) - 1;
    const double here = HeightOf(frame, plane);
    CrystalBounds bounds;
    bounds.top = HeightOf(frame, topmost) - here;
    bounds.plane = topmost % count;
    bounds.bottom = slabLayer ? HeightOf(frame, topmost + 1) - frame.period - here
                              : -std::numeric_limits<double>::infinity();
    return bounds;
}

}  // namespace qvre
