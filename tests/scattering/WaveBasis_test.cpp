#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

TEST(ZfSphericalBessel, AgreesWithTheStandardLibrary) {
    ZfSphericalBessel bessel;
    for (const double x : {0.001, 0.0999999, 0.1, 0.1000001, 1.0, 3.14159, 14.5, 31.0, 200.0}) {
        bessel.Calculate(22, x);
        for (unsigned l = 0; l <= 22 && std::abs(bessel.Y(static_cast<int>(l))) < 1e54; ++l) {
            const auto j = static_cast<double>(std::sph_bessell(l, x));
            const auto y = static_cast<double>(std::sph_neumannl(l, x));
            // Near a zero the scale of an error is that of the wave, |h_l|; below the barrier j_l dies out.
            const double scale = x > l ? std::hypot(j, y) : std::abs(j);
            EXPECT_NEAR(bessel.J(static_cast<int>(l)), j, 1e-12 * scale) << l << " " << x;
            EXPECT_NEAR(bessel.Y(static_cast<int>(l)), y, 1e-12 * std::hypot(j, y)) << l << " " << x;
        }
    }
}

// j_(l+1) y_l - j_l y_(l+1) = 1/x^2 (DLMF 10.50.1) ties every order to the next, small or large.
TEST(ZfSphericalBessel, KeepsTheWronskian) {
    ZfSphericalBessel bessel;
    for (const double x : {1e-9, 0.01, 0.7, 5.0, 30.0, 1000.0, 2e5, 1e12}) {
        for (const std::int32_t n : {1, 2, 15, 60}) {
            bessel.Calculate(n, x);
            for (std::int32_t l = 0; l < n && std::abs(bessel.Y(l + 1)) < 1e55; ++l)
                EXPECT_NEAR((bessel.J(l + 1) * bessel.Y(l) - bessel.J(l) * bessel.Y(l + 1)) * x * x, 1.0,
                            1e-11)
                    << l << " of " << n << " at " << x;
        }
    }
}

TEST(ZfSphericalBessel, CutsOffWhereYOverflows) {
    ZfSphericalBessel bessel;
    bessel.Calculate(60, 1.0);
    std::int32_t last = 0;
    while (std::abs(bessel.Y(last)) < 1e55) ++last;
    EXPECT_NE(bessel.J(last), 0.0);
    EXPECT_EQ(bessel.J(last + 1), 0.0);
    EXPECT_EQ(bessel.Y(60), 1e55);
    bessel.Calculate(2000, 1500.0);  // where the series of j overflows as well
    EXPECT_EQ(bessel.J(2000), 0.0);
    std::vector<std::complex<double>> h1;
    std::vector<std::complex<double>> h2;
    bessel.Calculate(3, 1e-18);
    bessel.GetH1H2(h1, h2);
    EXPECT_EQ(h1, (std::vector<std::complex<double>>{{1.0, 1e55}, {0.0, 1e55}, {0.0, 1e55}}));
    EXPECT_EQ(h2[0], std::complex<double>(1.0, -1e55));
}

TEST(SphericalHarmonics, AgreeWithTheStandardLibrary) {
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    for (const double theta : {0.0, 0.3, 1.2, kPi / 2, 3.0}) {
        for (const double phi : {0.0, 0.7, -2.5}) {
            HarmonicTable(norm, y, 20, theta, phi);
            for (std::int32_t l = 0; l < 20; ++l) {
                for (std::int32_t m = 0; m <= l; ++m) {
                    const std::complex<double> truth =
                        std::polar(1.0, m * phi) *
                        std::sph_legendre(static_cast<unsigned>(l), static_cast<unsigned>(m), theta);
                    EXPECT_LT(std::abs(y.At(l, m) - truth), 2e-13) << l << " " << m;
                    EXPECT_LT(std::abs(y.At(l, -m) - (m % 2 == 0 ? 1.0 : -1.0) * std::conj(truth)), 2e-13);
                }
            }
        }
    }
    HarmonicTable(norm, y, 2, 1.0, 0.5);  // a larger cache serves and stays
    EXPECT_EQ(norm.L, 20);
    const std::complex<double> y11 = -std::sqrt(3.0 / (8.0 * kPi)) * std::sin(1.0) * std::polar(1.0, 0.5);
    EXPECT_LT(std::abs(y.At(1, 1) - y11), 1e-15);
}
