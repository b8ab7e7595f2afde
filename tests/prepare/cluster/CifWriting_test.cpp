#include "prepare/cluster/CifWriting.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "prepare/cluster/CellGrid.h"
#include "prepare/cluster/CrystalSources.h"

using namespace qvre;

namespace {

/// Distances around each atom, sorted.
std::vector<std::vector<double>> Bonds(const CrystalCell& cell) {
    constexpr double kFar_angstrom = 4.2;
    const CellGrid grid(cell);
    std::vector<std::vector<double>> bonds;
    for (const CellAtom& atom : cell.atoms) {
        bonds.emplace_back();
        for (const CellGrid::Found& found : grid.Near(atom.fractional, kFar_angstrom))
            bonds.back().push_back(found.distance);
        std::sort(bonds.back().begin(), bonds.back().end());
    }
    return bonds;
}

}  // namespace

TEST(CifWriting, TheReaderFindsTheSameBonds) {
    // Oblique, with atoms at places that are no simple fractions.
    CrystalCell cell;
    cell.axes = gemmi::Mat33(2.88, -1.44, 0.3, 0.0, 2.494, 0.2, 0.0, 0.0, 19.5);
    cell.atoms = {
        {"Ag", {0.0, 0.0, 0.0}}, {"Ag", {0.331, 0.668, 0.123}, 0.0125}, {"O", {0.617, 0.295, 0.1901}}};
    const CrystalCell read = ParseCif(CellAsCif(cell, "c(2x2) test"));
    ASSERT_EQ(read.atoms.size(), 3U);
    EXPECT_EQ(read.Elements(), (std::vector<std::string>{"Ag", "O"}));
    EXPECT_NEAR(read.atoms[1].Uiso_angstrom2, 0.0125, 1e-6);
    const auto written = Bonds(cell);
    const auto bonds = Bonds(read);
    for (std::size_t i = 0; i < 3; ++i) {
        ASSERT_EQ(bonds[i].size(), written[i].size());
        for (std::size_t k = 0; k < bonds[i].size(); ++k) EXPECT_NEAR(bonds[i][k], written[i][k], 1e-6);
    }
}
