#include "prepare/cluster/CrystalCell.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace qvre {

double CrystalCell::DistanceFromLattice(const gemmi::Vec3& fractional) const {
    return axes
        .multiply(gemmi::Vec3(fractional.x - std::round(fractional.x),
                              fractional.y - std::round(fractional.y),
                              fractional.z - std::round(fractional.z)))
        .length();
}

std::vector<std::string> CrystalCell::Elements() const {
    std::vector<std::string> elements;
    for (const CellAtom& atom : atoms)
        if (std::find(elements.begin(), elements.end(), atom.element) == elements.end())
            elements.push_back(atom.element);
    return elements;
}

std::string CrystalCell::Formula() const {
    std::map<std::string, int> counts;
    for (const CellAtom& atom : atoms) ++counts[atom.element];
    int divisor = 0;
    for (const auto& [element, count] : counts) divisor = std::gcd(divisor, count);
    std::string formula;
    for (const std::string& element : Elements()) {
        const int count = counts[element] / divisor;
        formula += element;
        if (count > 1) formula += std::to_string(count);
    }
    return formula;
}

CellBox::CellBox(const gemmi::Mat33& reciprocal, const gemmi::Vec3& point, double radius) {
    constexpr double kRounding = 1e-6;
    for (int i = 0; i < 3; ++i) {
        const double reach = radius * reciprocal.row_copy(i).length() + kRounding;
        const auto axis = static_cast<std::size_t>(i);
        first.at(axis) = static_cast<int>(std::ceil(point.at(i) - reach));
        last.at(axis) = static_cast<int>(std::floor(point.at(i) + reach));
    }
}

}  // namespace qvre
