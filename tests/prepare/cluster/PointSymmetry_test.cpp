#include "prepare/cluster/PointSymmetry.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Inputs.h"
#include "foundation/Constants.h"

namespace {

/// Atoms on a circle of 2 angstrom at the given azimuths, a lighter one on the axis.
std::vector<ClusterAtom> Circle(const std::vector<double>& azimuths_deg) {
    std::vector<ClusterAtom> atoms = {AtomAt("", 0, 0, 0, "H")};
    for (const double azimuth : azimuths_deg)
        atoms.push_back(
            AtomAt("", 2.0 * std::cos(azimuth * kDegree), 2.0 * std::sin(azimuth * kDegree), -1.0));
    return atoms;
}

TEST(PointSymmetry, FindsTheGroupAndItsMirror) {
    const std::tuple<std::vector<double>, std::string, double> cases[] = {
        {{10, 70, 130, 190, 250, 310}, "6mm", 10.0},
        {{10, 100, 190, 280}, "4mm", 10.0},
        {{20, 140, 260}, "3m", 20.0},
        {{30, 80, 210, 260}, "2mm", 55.0},
        {{30, 80}, "m", 55.0},
        {{350, 30}, "m", 10.0}};
    for (const auto& [azimuths, name, mirror] : cases) {
        const PointSymmetry found = FindPointSymmetry(Circle(azimuths));
        EXPECT_EQ(found.Name(), name);
        ASSERT_TRUE(found.mirror_deg) << name;
        EXPECT_NEAR(*found.mirror_deg, mirror, 1e-9) << name;
    }
    EXPECT_EQ(FindPointSymmetry(Circle({0, 40, 100})).Name(), "1");
    EXPECT_EQ(FindPointSymmetry(Circle({})).Name(), "infinite");
}

// Two rings turned against each other by an odd angle leave no mirror; other elements leave less.
TEST(PointSymmetry, ElementsAndRingsCount) {
    std::vector<ClusterAtom> atoms = Circle({0, 90, 180, 270});
    for (const ClusterAtom& atom : Circle({20, 110, 200, 290})) {
        atoms.push_back(atom);
        atoms.back().position.Data()[2] = 1e-10;
    }
    atoms.pop_back();
    EXPECT_EQ(FindPointSymmetry(atoms).Name(), "1");
    atoms = Circle({0, 90, 180, 270});
    atoms[1].atom = std::string("Ni");
    EXPECT_EQ(FindPointSymmetry(atoms).Name(), "m");
    atoms[3].atom = std::string("Ni");
    EXPECT_EQ(FindPointSymmetry(atoms).Name(), "2mm");
}

}  // namespace
