#include "prepare/atomic/FreeAtom.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "prepare/atomic/BindingEnergies.h"

namespace {

const ScreeningTable kAtoms(QVRE_DATA "/screening_dhfs.csv");

double Binding(const RadialPotential& field, const AtomicShell& shell) {
    return -BoundOrbital({field, shell.n, shell.l, RadialEquation::kScalarRelativistic}).energy * kHartree_eV;
}

}  // namespace

TEST(FreeAtom, GroundStates) {
    for (int z = 1; z <= 92; ++z) {
        int electrons = 0;
        for (const AtomicShell& shell : GroundState(z)) {
            electrons += shell.electrons;
            EXPECT_TRUE(shell.electrons > 0 && shell.electrons <= 2 * (2 * shell.l + 1)) << z;
        }
        EXPECT_EQ(electrons, z);
    }
    const auto occupied = [](int z, int n, int l) { return IsOccupied(z, n, l); };
    EXPECT_TRUE(occupied(1, 1, 0) && occupied(5, 2, 1) && occupied(21, 3, 2) && occupied(58, 4, 3));
    EXPECT_FALSE(occupied(4, 2, 1) || occupied(20, 3, 2) || occupied(18, 4, 0) || occupied(56, 4, 3));
    EXPECT_FALSE(occupied(46, 5, 0) || occupied(57, 4, 3)) << "palladium and lanthanum depart from the order";
}

// Measured binding energies count from the Fermi level, some 4.5 eV below the vacuum, and an atom in a solid
// relaxes around the hole: that lowers them by 5 to 12 eV.
TEST(FreeAtom, LevelsLieWhereTheyAreMeasured) {
    constexpr double kWorkFunction = 4.5;
    constexpr double kDeep = 0.05;        // of a level below 200 eV
    constexpr double kRelaxation = 12.5;  // eV, of a shallow one
    const BindingEnergies measured(QVRE_DATA "/binding_energies.csv");
    std::size_t levels = 0;
    for (const char* element : {"Ca", "Se", "Br", "Nb", "Ag", "Au"}) {
        const ScreenedAtom& atom = kAtoms.Find(element);
        const RadialPotential field = SelfConsistentField(atom);
        for (const AtomicShell& shell : GroundState(atom.atomicNumber)) {
            if (shell.n > 4) continue;
            const auto energy = measured.Find(element, {shell.n, shell.l, 0});
            if (!energy) continue;
            ++levels;
            const double difference = Binding(field, shell) - kWorkFunction - *energy;
            EXPECT_LT(std::abs(difference), *energy > 200.0 ? kDeep * *energy : kRelaxation)
                << element << shell.n << shell.l;
        }
    }
    EXPECT_EQ(levels, 30U);
}

// Far out the electron sees the ion that it leaves, close to the nucleus all of its charge.
TEST(FreeAtom, FieldAtItsEnds) {
    const RadialPotential field = SelfConsistentField(kAtoms.Find("Au"));
    EXPECT_NEAR(1e-8 * field(1e-8), -79.0, 1e-6);
    EXPECT_NEAR(1e-5 * field(1e-5), -79.0, 0.02);
    EXPECT_DOUBLE_EQ(30.0 * field(30.0), -1.0);
    EXPECT_DOUBLE_EQ(1000.0 * field(1000.0), -1.0);
}
