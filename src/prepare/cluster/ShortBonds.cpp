#include "prepare/cluster/ShortBonds.h"

#include <gemmi/elem.hpp>
#include <utility>

#include "prepare/cluster/CellGrid.h"

namespace qvre {

namespace {

double CovalentRadius(const CellAtom& atom) {
    return gemmi::Element(atom.element).covalent_r();
}

}  // namespace

std::vector<ShortBond> ShortBondsOf(const CrystalCell& cell) {
    constexpr double kShort = 0.8;
    constexpr double kLongest_angstrom = 4.0;
    constexpr double kItself_angstrom = 1e-6;
    std::vector<ShortBond> bonds;
    if (cell.atoms.empty()) return bonds;
    const CellGrid grid(cell);
    for (std::size_t i = 0; i < cell.atoms.size(); ++i) {
        bool itself = false;
        for (const CellGrid::Found& found : grid.Near(cell.atoms[i].fractional, kLongest_angstrom)) {
            if (found.atom == i && found.distance < kItself_angstrom && !std::exchange(itself, true))
                continue;
            const double usual = CovalentRadius(cell.atoms[i]) + CovalentRadius(cell.atoms[found.atom]);
            if (found.distance < kShort * usual) bonds.push_back({i, found.atom, found.distance, usual});
        }
    }
    return bonds;
}

}  // namespace qvre
