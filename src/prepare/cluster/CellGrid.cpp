#include "prepare/cluster/CellGrid.h"

#include <algorithm>
#include <cmath>

namespace qvre {

namespace {

double Reduced(double fraction) {
    const double reduced = fraction - std::floor(fraction);
    return reduced < 1.0 ? reduced : 0.0;
}

int FloorDivision(int number, int divisor) {
    return number >= 0 ? number / divisor : -((-number + divisor - 1) / divisor);
}

}  // namespace

CellGrid::CellGrid(const CrystalCell& cell) : cell_(cell), reciprocal_(cell.Reciprocal()) {
    // Boxes about as wide in all directions, one an atom.
    const double volume = std::abs(cell.axes.determinant());
    const double width = std::cbrt(volume / static_cast<double>(std::max<std::size_t>(1, cell.atoms.size())));
    std::size_t count = 1;
    for (int axis = 0; axis < 3; ++axis) {
        const double spacing = 1.0 / reciprocal_.row_copy(axis).length();
        boxes_.at(static_cast<std::size_t>(axis)) =
            static_cast<int>(std::clamp(spacing / width, 1.0, 1000.0));
        count *= static_cast<std::size_t>(boxes_.at(static_cast<std::size_t>(axis)));
    }
    atoms_.resize(count);
    for (std::size_t atom = 0; atom < cell.atoms.size(); ++atom) {
        const gemmi::Vec3& f = cell.atoms[atom].fractional;
        const gemmi::Vec3 inside(Reduced(f.x), Reduced(f.y), Reduced(f.z));
        std::array<int, 3> place = {};
        for (int axis = 0; axis < 3; ++axis) {
            const int boxes = boxes_.at(static_cast<std::size_t>(axis));
            place.at(static_cast<std::size_t>(axis)) =
                std::min(boxes - 1, static_cast<int>(inside.at(axis) * boxes));
        }
        inside_.push_back(inside);
        atoms_[BoxOf(place)].push_back(atom);
    }
}

std::size_t CellGrid::BoxOf(const std::array<int, 3>& place) const {
    const std::size_t row = static_cast<std::size_t>(place[0]) * static_cast<std::size_t>(boxes_[1]) +
                            static_cast<std::size_t>(place[1]);
    return row * static_cast<std::size_t>(boxes_[2]) + static_cast<std::size_t>(place[2]);
}

std::vector<CellGrid::Found> CellGrid::Near(const gemmi::Vec3& fractional, double radius) const {
    constexpr double kRounding = 1e-9;
    const gemmi::Vec3 point(Reduced(fractional.x), Reduced(fractional.y), Reduced(fractional.z));
    std::array<int, 3> first = {};
    std::array<int, 3> last = {};
    for (int axis = 0; axis < 3; ++axis) {
        const auto i = static_cast<std::size_t>(axis);
        const double reach = radius * reciprocal_.row_copy(axis).length() + kRounding;
        first.at(i) = static_cast<int>(std::floor((point.at(axis) - reach) * boxes_.at(i)));
        last.at(i) = static_cast<int>(std::floor((point.at(axis) + reach) * boxes_.at(i)));
    }
    std::vector<Found> found;
    for (int i = first[0]; i <= last[0]; ++i)
        for (int j = first[1]; j <= last[1]; ++j)
            for (int k = first[2]; k <= last[2]; ++k) {
                const std::array<int, 3> cell = {FloorDivision(i, boxes_[0]), FloorDivision(j, boxes_[1]),
                                                 FloorDivision(k, boxes_[2])};
                const gemmi::Vec3 image(cell[0], cell[1], cell[2]);
                const std::array<int, 3> place = {i - cell[0] * boxes_[0], j - cell[1] * boxes_[1],
                                                  k - cell[2] * boxes_[2]};
                for (const std::size_t atom : atoms_[BoxOf(place)]) {
                    const gemmi::Vec3 offset = cell_.axes.multiply(inside_[atom] + image - point);
                    const double distance = offset.length();
                    if (distance <= radius) found.push_back({atom, distance, offset});
                }
            }
    return found;
}

}  // namespace qvre
