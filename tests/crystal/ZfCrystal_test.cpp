#include "crystal/ZfCrystal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <utility>

#include "ErrorText.h"
#include "crystal/CrystalPresets.h"

namespace {

void ExpectVector(const ZfLDoubleMatrix& v, double x, double y, double z) {
    EXPECT_DOUBLE_EQ(v.VectorValueAt(0), x);
    EXPECT_DOUBLE_EQ(v.VectorValueAt(1), y);
    EXPECT_DOUBLE_EQ(v.VectorValueAt(2), z);
}

/// Atoms of the kind of `atom` that lie a lattice vector away from it, up to whole cubes.
int Images(const ZfCrystal& crystal, const ZfAtomAttr& atom, const ZfLDoubleMatrix& latticeVector, double a) {
    int count = 0;
    for (const ZfAtomAttr& other : crystal.atoms) {
        bool same = other.kind == atom.kind && other.element == atom.element;
        for (int i = 0; i < 3; ++i) {
            const double step = atom.position.VectorValueAt(i) + latticeVector.VectorValueAt(i);
            same = same && std::abs(std::remainder(step - other.position.VectorValueAt(i), a)) < 1e-9;
        }
        count += same;
    }
    return count;
}

}  // namespace

// The primitive vectors carry the basis into itself, each atom onto exactly one: a misplaced or doubled atom
// breaks it. With one atom of each kind known it fixes the structure.
TEST(CrystalPresets, PrimitiveVectorsCarryTheBasisIntoItself) {
    const std::pair<const char*, double> constants[] = {
        {"Cu", 3.61}, {"Diamond", 3.567}, {"Si", 5.43}, {"Ge", 5.658}, {"alpha-Sn", 6.49}};
    ZfCrystalTable table;
    AddCrystalPresets(table);
    ASSERT_EQ(table.crystals.size(), 5U);
    for (const auto& [name, a] : constants) {
        const ZfCrystal& crystal = table.crystals.at(name);
        ASSERT_EQ(crystal.atoms.size(), crystal.name == "Cu" ? 4u : 8u);
        ExpectVector(crystal.axes[2], 0.0, 0.0, a);
        for (const ZfLDoubleMatrix& v : crystal.latticeVectors) {
            EXPECT_NEAR(NormSquared(v), a * a / 2.0, 1e-9) << name;
            for (const ZfAtomAttr& atom : crystal.atoms) EXPECT_EQ(Images(crystal, atom, v, a), 1) << name;
        }
    }
    ExpectVector(table.crystals.at("Cu").latticeVectors[1], 1.805, 0.0, 1.805);
    ExpectVector(table.crystals.at("Si").atoms.at(4).position, 1.3575, 1.3575, 1.3575);
    EXPECT_EQ(table.crystals.at("Ge").kinds, (std::set<std::int32_t>{0, 1}));
    EXPECT_EQ(table.crystals.at("Diamond").atoms.at(7).element, "C");
}

TEST(ZfCrystal, ObliqueAxesWithTheirOwnConstants) {
    ZfCrystal crystal;
    EXPECT_EQ(ErrorText([&] { crystal.SetLatticeVector(3, "0", "0", "0"); }), "out of range");
    EXPECT_EQ(ErrorText([&] { crystal.Build(); }), "error: An expression has no value.");
    crystal.axisDirections[0] = Vector3(3.0, 4.0, 0.0);
    crystal.axisDirections[1] = Vector3(0.0, 2.0, 0.0);
    crystal.latticeConstants = {10.0, 2.0, 0.0};
    for (std::size_t i = 0; i < 3; ++i) crystal.SetLatticeVector(i, "1", "-1", "7");
    crystal.AddAtom("1/2", "1/4", "1", "Fe", 5, 1.0);
    crystal.Build();
    ExpectVector(crystal.axes[2], 0.0, 0.0, 0.0);  // a direction that was never set
    ExpectVector(crystal.latticeVectors[2], 6.0, 6.0, 0.0);
    ExpectVector(crystal.atoms[0].position, 3.0, 4.5, 0.0);
    crystal.latticeZ.pop_back();
    EXPECT_EQ(ErrorText([&] { crystal.Build(); }), "Error");
}
