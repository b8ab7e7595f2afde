#include "prepare/atomic/CoreOrbital.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"

namespace {

double Hydrogen(double r) {
    return -1.0 / r;
}

/// The integral of r times the normalised hydrogen states P and Q, Q = norm r^power exp(-decay r).
double DipoleWith(const CoreOrbital& orbital, double norm, double power, double decay) {
    std::vector<double> u;
    for (const double r : orbital.r) u.push_back(norm * std::pow(r, power) * std::exp(-decay * r));
    return DipoleIntegral(orbital, u);
}

}  // namespace

TEST(CoreOrbital, HydrogenLevels) {
    constexpr double kLevel = 1e-10;  // hartree: the fourth power of the step
    for (int n = 1; n <= 7; ++n)
        for (int l = 0; l < n; ++l)
            EXPECT_NEAR(BoundOrbital(Hydrogen, n, l).energy, -0.5 / (n * n), kLevel) << n << "," << l;
    // 1/n^2 holds in the field of the ion U91+ as well, where the grid is at its coarsest.
    EXPECT_NEAR(BoundOrbital([](double r) { return -92.0 / r; }, 1, 0).energy / (92.0 * 92.0), -0.5, kLevel);
    EXPECT_EQ(ErrorText([] { BoundOrbital([](double r) { return -std::exp(-9.0 * r) / r; }, 3, 2); }),
              "The field does not bind the level n = 3, l = 2");
}

// Radial functions in closed form: H. A. Bethe, E. E. Salpeter, Quantum Mechanics of One- and Two-Electron
// Atoms, section 3, and the integrals between them, section 63.
TEST(CoreOrbital, HydrogenDipoleIntegrals) {
    constexpr double kIntegral = 1e-9;  // bohr
    const double norm2p = 1.0 / std::sqrt(24.0);
    const double norm3d = 4.0 / (81.0 * std::sqrt(30.0));
    EXPECT_NEAR(DipoleWith(BoundOrbital(Hydrogen, 1, 0), norm2p, 2.0, 0.5), 128.0 * std::sqrt(6.0) / 243.0,
                kIntegral);
    EXPECT_NEAR(DipoleWith(BoundOrbital(Hydrogen, 2, 0), norm2p, 2.0, 0.5), -3.0 * std::sqrt(3.0), kIntegral);
    EXPECT_NEAR(DipoleWith(BoundOrbital(Hydrogen, 2, 1), norm3d, 3.0, 1.0 / 3.0),
                norm2p * norm3d * 720.0 * std::pow(1.2, 7), kIntegral);
}

TEST(CoreOrbital, ShellsFillInMadelungsOrder) {
    const auto occupied = [](int z, int n, int l) { return IsOccupied(z, n, l); };
    EXPECT_TRUE(occupied(1, 1, 0) && occupied(5, 2, 1) && occupied(21, 3, 2) && occupied(58, 4, 3));
    EXPECT_FALSE(occupied(4, 2, 1) || occupied(20, 3, 2) || occupied(18, 4, 0) || occupied(56, 4, 3));
}
