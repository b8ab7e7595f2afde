#include "prepare/cluster/SurfaceFrame.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <set>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

/// "(001)", or "(1 0 -1)" when an index has a sign or two digits.
std::string MillerIndices(const std::array<int, 3>& hkl) {
    const bool digits = std::all_of(hkl.begin(), hkl.end(), [](int i) { return i >= 0 && i <= 9; });
    std::string text = "(";
    for (std::size_t i = 0; i < 3; ++i) {
        if (i > 0 && !digits) text += " ";
        text += std::to_string(hkl.at(i));
    }
    return text + ")";
}

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

/// The layers of a frame that has its planes.
std::vector<AtomicLayer> LayersOf(const SurfaceFrame& frame, double tolerance) {
    constexpr double kRounding_angstrom = 1e-6;  // a tolerance that is the very distance of two planes
    const std::size_t count = frame.planes.size();
    const auto isJoined = [&](std::size_t plane) {  // to the plane above
        return tolerance > kSamePlane_angstrom && frame.GapAbove(plane) <= tolerance + kRounding_angstrom;
    };
    std::vector<AtomicLayer> layers;
    for (std::size_t plane = 0; plane < count; ++plane) {
        if (isJoined(plane + count - 1)) continue;
        AtomicLayer layer{plane, plane};
        while (isJoined(layer.topmost)) ++layer.topmost;
        layers.push_back(layer);
    }
    if (!layers.empty()) return layers;
    for (std::size_t plane = 0; plane < count; ++plane) layers.push_back({plane, plane});
    return layers;
}

}  // namespace

SurfaceFrame::SurfaceFrame(const CrystalCell& cell, const std::array<int, 3>& hkl,
                           double layerTolerance_angstrom) {
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
    layers = LayersOf(*this, layerTolerance_angstrom);
    layerOf.resize(planes.size());
    for (std::size_t layer = 0; layer < layers.size(); ++layer)
        for (std::size_t plane = layers[layer].lowest; plane <= layers[layer].topmost; ++plane)
            layerOf[plane % planes.size()] = layer;
}

double SurfaceFrame::HeightOf(std::size_t plane) const {
    const std::size_t periods = plane / planes.size();
    return planes[plane % planes.size()].height + period * static_cast<double>(periods);
}

std::size_t SurfaceFrame::TopmostPlane(std::size_t layer) const {
    return layers[layer % layers.size()].topmost + layer / layers.size() * planes.size();
}

gemmi::Mat33 SurfaceFrame::RotatedBy(double angle_deg) const {
    const double turn = angle_deg - 360.0 * std::floor(angle_deg / 360.0);
    double cosine = std::cos(gemmi::rad(turn));
    double sine = std::sin(gemmi::rad(turn));
    if (turn == 90.0 || turn == 270.0) cosine = 0.0;
    if (turn == 180.0) sine = 0.0;
    return gemmi::Mat33(cosine, -sine, 0.0, sine, cosine, 0.0, 0.0, 0.0, 1.0).multiply(rotation);
}

std::string SurfaceName(const CrystalCell& cell, const std::array<int, 3>& hkl) {
    return cell.Formula() + MillerIndices(hkl);
}

std::string ElementsOf(const CrystalCell& cell, const std::vector<std::size_t>& atoms) {
    std::set<std::string> elements;
    for (const std::size_t atom : atoms) elements.insert(cell.atoms[atom].element);
    std::string text;
    for (const std::string& element : elements) text += (text.empty() ? "" : " ") + element;
    return text;
}

std::optional<int> LayerInSlab(const SurfaceFrame& frame, std::size_t atom) {
    const std::size_t layer = frame.layerOf[frame.planeOf[atom]];
    for (std::size_t up = 0; up < frame.layers.size(); ++up)
        if (frame.GapAbove(frame.TopmostPlane(layer + up)) > kVacuum_angstrom)
            return static_cast<int>(up) + 1;
    return std::nullopt;
}

std::optional<CrystalBounds> BoundsForLayer(const SurfaceFrame& frame, std::size_t atom, int layer) {
    const std::optional<int> slabLayer = LayerInSlab(frame, atom);
    if (slabLayer && *slabLayer != layer) return std::nullopt;
    const std::size_t count = frame.planes.size();
    // The planes of a layer that reaches into the next period are counted on from its lowest.
    std::size_t plane = frame.planeOf[atom];
    const std::size_t first = frame.layerOf[plane];
    if (plane < frame.layers[first].lowest) plane += count;
    const std::size_t topmost = frame.TopmostPlane(first + static_cast<std::size_t>(layer) - 1);
    const double here = frame.HeightOf(plane);
    CrystalBounds bounds;
    bounds.top = frame.HeightOf(topmost) - here;
    bounds.plane = topmost % count;
    bounds.bottom = slabLayer ? frame.HeightOf(topmost + 1) - frame.period - here
                              : -std::numeric_limits<double>::infinity();
    return bounds;
}

}  // namespace qvre
