#include "crystal/ZfCrystal.h"

#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

#include "crystal/CrystalPresets.h"
#include "foundation/ZfError.h"

namespace {

void ExpectVector(const ZfLDoubleMatrix& v, double x, double y, double z) {
    ASSERT_EQ(v.VectorSize(), 3);
    EXPECT_DOUBLE_EQ(v.VectorValueAt(0), x);
    EXPECT_DOUBLE_EQ(v.VectorValueAt(1), y);
    EXPECT_DOUBLE_EQ(v.VectorValueAt(2), z);
}

ZfCrystalTable Presets() {
    ZfCrystalTable table;
    AddCrystalPresets(table);
    return table;
}

/// Atoms of the kind of `atom` that lie a lattice vector away from it, up to whole cubes.
int Images(const ZfCrystal& crystal, const ZfAtomAttr& atom, const ZfLDoubleMatrix& latticeVector, double a) {
    int count = 0;
    for (const ZfAtomAttr& other : crystal.atoms) {
        bool same = other.kind == atom.kind && other.element == atom.element;
        for (int i = 0; i < 3; ++i) {
            const double cubes = (atom.position.VectorValueAt(i) + latticeVector.VectorValueAt(i) -
                                  other.position.VectorValueAt(i)) /
                                 a;
            same = same && std::fabs(cubes - std::round(cubes)) < 1e-9;
        }
        count += same;
    }
    return count;
}

TEST(CrystalPresets, StatedVectorsAndPositions) {
    const ZfCrystalTable table = Presets();
    std::string names;
    for (const auto& [name, crystal] : table.crystals) names += name + " ";
    EXPECT_EQ(names, "Cu Diamond Ge Si alpha-Sn ");
    ExpectVector(table.crystals.at("Cu").latticeVectors[1], 1.805, 0.0, 1.805);
    ExpectVector(table.crystals.at("Si").atoms.at(4).position, 1.3575, 1.3575, 1.3575);
    EXPECT_EQ(table.crystals.at("Cu").kinds, std::set<std::int32_t>{0});
    EXPECT_EQ(table.crystals.at("Ge").kinds, (std::set<std::int32_t>{0, 1}));
    EXPECT_EQ(table.crystals.at("Diamond").atoms.at(7).element, "C");
}

// The primitive vectors carry the basis into itself, each atom onto exactly one: a misplaced or doubled atom
// breaks it. With one atom of each kind known, as above, it fixes the structure.
TEST(CrystalPresets, PrimitiveVectorsCarryTheBasisIntoItself) {
    const std::pair<const char*, double> constants[] = {
        {"Cu", 3.61}, {"Diamond", 3.567}, {"Si", 5.43}, {"Ge", 5.658}, {"alpha-Sn", 6.49}};
    const ZfCrystalTable table = Presets();
    for (const auto& [name, a] : constants) {
        const ZfCrystal& crystal = table.crystals.at(name);
        ASSERT_EQ(crystal.atoms.size(), crystal.name == "Cu" ? 4u : 8u);
        ExpectVector(crystal.axes[2], 0.0, 0.0, a);
        for (const ZfLDoubleMatrix& v : crystal.latticeVectors) {
            EXPECT_NEAR(NormSquared(v), a * a / 2.0, 1e-9) << name;
            for (const ZfAtomAttr& atom : crystal.atoms)
                EXPECT_EQ(Images(crystal, atom, v, a), 1)
                    << name << ' ' << atom.coordinates[0] << ' ' << atom.coordinates[1] << ' '
                    << atom.coordinates[2];
        }
    }
}

TEST(ZfCrystal, ObliqueAxesWithTheirOwnConstants) {
    ZfCrystal crystal;
    crystal.axisDirections[0] = Vector3(3.0, 4.0, 0.0);
    crystal.axisDirections[1] = Vector3(0.0, 2.0, 0.0);
    crystal.latticeConstants = {10.0, 2.0, 0.0};
    for (std::size_t i = 0; i < 3; ++i) crystal.SetLatticeVector(i, "1", "-1", "7");
    crystal.AddAtom("1/2", "1/4", "1", "Fe", 5, 1.0);
    crystal.Build();
    ExpectVector(crystal.axes[2], 0.0, 0.0, 0.0);  // a direction that was never set
    ExpectVector(crystal.latticeVectors[2], 6.0, 6.0, 0.0);
    ExpectVector(crystal.atoms[0].position, 3.0, 4.5, 0.0);
    EXPECT_EQ(crystal.kinds, std::set<std::int32_t>{5});
}

TEST(ZfCrystal, Failures) {
    ZfCrystal crystal;
    EXPECT_THROW(crystal.SetLatticeVector(3, "0", "0", "0"), std::out_of_range);
    EXPECT_THROW(crystal.Build(), ZfError);  // empty expressions
    crystal.latticeZ.pop_back();
    try {
        crystal.Build();
        ADD_FAILURE();
    } catch (const ZfError& error) {
        EXPECT_EQ(error.message, "Error");
    }
}

}  // namespace
