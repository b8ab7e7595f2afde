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
            EXPECT_NEAR(BoundOrbital({Hydrogen, n, l}).energy, -0.5 / (n * n), kLevel) << n << "," << l;
    // 1/n^2 holds in the field of the ion U91+ as well, where the grid is at its coarsest.
    EXPECT_NEAR(BoundOrbital({[](double r) { return -92.0 / r; }, 1, 0}).energy / (92.0 * 92.0), -0.5,
                kLevel);
    EXPECT_EQ(ErrorText([] {
                  BoundOrbital({[](double r) { return -std::exp(-9.0 * r) / r; }, 3, 2});
              }),
              "The field does not bind the level n = 3, l = 2");
}

// Radial functions in closed form: H. A. Bethe, E. E. Salpeter, Quantum Mechanics of One- and Two-Electron
// Atoms, section 3, and the integrals between them, section 63.
TEST(CoreOrbital, HydrogenDipoleIntegrals) {
    constexpr double kIntegral = 1e-9;  // bohr
    const double norm2p = 1.0 / std::sqrt(24.0);
    const double norm3d = 4.0 / (81.0 * std::sqrt(30.0));
    EXPECT_NEAR(DipoleWith(BoundOrbital({Hydrogen, 1, 0}), norm2p, 2.0, 0.5), 128.0 * std::sqrt(6.0) / 243.0,
                kIntegral);
    EXPECT_NEAR(DipoleWith(BoundOrbital({Hydrogen, 2, 0}), norm2p, 2.0, 0.5), -3.0 * std::sqrt(3.0),
                kIntegral);
    EXPECT_NEAR(DipoleWith(BoundOrbital({Hydrogen, 2, 1}), norm3d, 3.0, 1.0 / 3.0),
                norm2p * norm3d * 720.0 * std::pow(1.2, 7), kIntegral);
}

namespace {

constexpr double kLight = 137.035999;

double Relativistic(double z, int n, int l) {
    return BoundOrbital({[z](double r) { return -z / r; }, n, l, RadialEquation::kScalarRelativistic}).energy;
}

/// Dirac's energy (hartree, without the rest energy) in the field of a point charge.
double Dirac(double z, int n, double j) {
    const double a = z / kLight;
    const double root = std::sqrt((j + 0.5) * (j + 0.5) - a * a);
    return kLight * kLight * (1.0 / std::sqrt(1.0 + std::pow(a / (n - j - 0.5 + root), 2)) - 1.0);
}

}  // namespace

// Without spin-orbit splitting Dirac's equation is left as it is for s levels; others lie at the mean of
// their pair, weighted by 2j + 1, but for the second order of the splitting, which goes with Z^4 (D. D.
// Koelling, B. N. Harmon, J. Phys. C 10, 3107 (1977)).
TEST(CoreOrbital, ScalarRelativisticLevels) {
    constexpr double kLevel = 1e-7;
    for (const double z : {1.0, 29.0, 79.0})
        for (int n = 1; n <= 4; ++n)
            EXPECT_NEAR(Relativistic(z, n, 0) / Dirac(z, n, 0.5), 1.0, kLevel) << z << " " << n;
    constexpr double kSecondOrder = 2e-7;  // the terms themselves make up to 2e-4
    for (int n = 2; n <= 4; ++n)
        for (int l = 1; l < n; ++l) {
            const double mean = (l * Dirac(5.0, n, l - 0.5) + (l + 1) * Dirac(5.0, n, l + 0.5)) / (2 * l + 1);
            EXPECT_NEAR(Relativistic(5.0, n, l) / mean, 1.0, kSecondOrder) << n << l;
        }
}
