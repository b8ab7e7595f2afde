#include "prepare/cluster/CellCheck.h"

#include <fmt/format.h>

#include <cmath>
#include <string>

#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"
#include "prepare/cluster/CellGrid.h"

namespace qvre {

namespace {

constexpr double kNearest_angstrom = 0.5;  // what the loader of clusters refuses
constexpr double kLargest_angstrom = 1e4;

void CheckElement(const std::string& element) {
    try {
        ZfAtomName().SetName(element);
    } catch (const ZfError&) {
        throw ZfError("\"" + element + "\" is no element symbol; write it as in the periodic table, like Fe");
    }
    if (element.empty()) throw ZfError("An atom of the crystal has no element symbol");
}

/// Lattice planes closer than the nearest atoms are a broken cell, and would make endless boxes of cells.
void CheckAxes(const CrystalCell& cell) {
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    for (int i = 0; i < 3; ++i) {
        const double spacing = 1.0 / reciprocal.row_copy(i).length();
        const double length = cell.axes.column_copy(i).length();
        if (spacing > kNearest_angstrom && length < kLargest_angstrom) continue;
        const std::string planes =
            std::isfinite(spacing)
                ? fmt::format(" and its lattice planes along it stand {:.4g} angstrom apart", spacing)
                : "";
        throw ZfError(
            fmt::format("The cell has no sensible volume: its axis {} is {:.4g} angstrom long{}; check "
                        "lengths (angstrom) and angles",
                        "abc"[i], length, planes));
    }
}

void CheckPlace(const CellAtom& atom) {
    constexpr double kMostCells = 1e4;
    for (int i = 0; i < 3; ++i)
        if (!(std::abs(atom.fractional.at(i)) < kMostCells))
            throw ZfError("An atom (" + atom.element + ") lies far outside the cell: check its coordinates");
}

[[noreturn]] void ThrowTooClose(const CrystalCell& cell, std::size_t i, std::size_t j, double distance) {
    throw ZfError(
        fmt::format("Atoms {} ({}) and {} ({}) of the cell are {:.3f} angstrom apart, images included: more "
                    "than {:.1f} is needed",
                    i + 1, cell.atoms[i].element, j + 1, cell.atoms[j].element, distance, kNearest_angstrom));
}

void CheckDistances(const CrystalCell& cell) {
    const CellGrid grid(cell);
    for (std::size_t i = 0; i < cell.atoms.size(); ++i) {
        bool itself = false;
        for (const CellGrid::Found& found : grid.Near(cell.atoms[i].fractional, kNearest_angstrom)) {
            if (found.atom != i || itself) ThrowTooClose(cell, i, found.atom, found.distance);
            itself = true;
        }
    }
}

}  // namespace

void CheckCell(const CrystalCell& cell) {
    if (cell.atoms.empty()) throw ZfError("The crystal has no atoms");
    for (const CellAtom& atom : cell.atoms) CheckElement(atom.element);
    CheckAxes(cell);
    for (const CellAtom& atom : cell.atoms) CheckPlace(atom);
    CheckDistances(cell);
}

}  // namespace qvre
