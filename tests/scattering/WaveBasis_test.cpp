#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "scattering/SphericalHarmonics.h"
#include "scattering/ZfSphericalBessel.h"

namespace {

double TrueJ(std::int32_t l, double x) {
    return static_cast<double>(std::sph_bessel(static_cast<unsigned>(l), static_cast<long double>(x)));
}

double TrueY(std::int32_t l, double x) {
    return static_cast<double>(std::sph_neumann(static_cast<unsigned>(l), static_cast<long double>(x)));
}

/// Near a zero of j_l the scale of its error is that of the wave, |h_l|, unless j_l dies out below the
/// barrier.
double Scale(std::int32_t l, double x) {
    return x > l ? std::hypot(TrueJ(l, x), TrueY(l, x)) : std::abs(TrueJ(l, x));
}

}  // namespace

TEST(ZfSphericalBessel, AgreesWithTheStandardLibrary) {
    ZfSphericalBessel bessel;
    for (const double x : {0.001, 0.0999999, 0.1, 0.1000001, 1.0, 3.14159, 14.5, 31.0, 200.0}) {
        bessel.Calculate(22, x);
        for (std::int32_t l = 0; l <= 22; ++l) {
            if (std::abs(bessel.Y(l)) > 1e54) break;
            EXPECT_NEAR(bessel.J(l), TrueJ(l, x), 1e-12 * Scale(l, x)) << l << " " << x;
            EXPECT_NEAR(bessel.Y(l), TrueY(l, x), 1e-12 * std::hypot(TrueJ(l, x), TrueY(l, x)))
                << l << " " << x;
        }
    }
}

// j_(l+1) y_l - j_l y_(l+1) = 1/x^2 (DLMF 10.50.1) ties every order to the next, small or large.
TEST(ZfSphericalBessel, KeepsTheWronskian) {
    ZfSphericalBessel bessel;
    for (const double x : {1e-9, 0.01, 0.1, 0.7, 5.0, 30.0, 1000.0, 2e5, 1e12}) {
        for (const std::int32_t n : {1, 2, 5, 15, 60}) {
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
    ASSERT_LT(last, 59);
    EXPECT_NEAR(bessel.J(last) / TrueJ(last, 1.0), 1.0, 1e-12);
    EXPECT_NEAR(bessel.J(0), std::sin(1.0), 1e-15);
    for (std::int32_t l = last + 1; l <= 60; ++l) {
        EXPECT_EQ(bessel.J(l), 0.0);
        EXPECT_EQ(bessel.Y(l), 1e55);
    }
    bessel.Calculate(2000, 1500.0);  // where the series of j overflows as well
    EXPECT_EQ(bessel.J(2000), 0.0);

    for (const double x : {0.0, 1e-18}) {
        std::vector<std::complex<double>> h1;
        std::vector<std::complex<double>> h2;
        bessel.Calculate(3, x);
        bessel.GetH1H2(h1, h2);
        EXPECT_EQ(h1, (std::vector<std::complex<double>>{{1.0, 1e55}, {0.0, 1e55}, {0.0, 1e55}}));
        EXPECT_EQ(h2[0], std::complex<double>(1.0, -1e55));
    }
}

TEST(SphericalHarmonics, AgreeWithTheStandardLibrary) {
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    for (const double theta : {0.0, 0.3, 1.2, kPi / 2, 3.0}) {
        for (const double phi : {0.0, 0.7, -2.5}) {
            HarmonicTable(norm, y, 20, theta, phi);
            for (std::int32_t l = 0; l < 20; ++l) {
                for (std::int32_t m = 0; m <= l; ++m) {
                    const double p =
                        std::sph_legendre(static_cast<unsigned>(l), static_cast<unsigned>(m), theta);
                    const std::complex<double> truth = std::polar(1.0, m * phi) * p;
                    const double sign = m % 2 == 0 ? 1.0 : -1.0;
                    EXPECT_LT(std::abs(y.At(l, m) - truth), 2e-13) << l << " " << m;
                    EXPECT_LT(std::abs(y.At(l, -m) - sign * std::conj(truth)), 2e-13) << l << " " << -m;
                }
            }
        }
    }
    EXPECT_EQ(norm.L, 20);
    HarmonicTable(norm, y, 2, 1.0, 0.5);  // a larger cache serves and stays
    EXPECT_EQ(norm.L, 20);
    const std::complex<double> y11 = -std::sqrt(3.0 / (8.0 * kPi)) * std::sin(1.0) * std::polar(1.0, 0.5);
    EXPECT_LT(std::abs(y.At(1, 1) - y11), 1e-15);
    EXPECT_EQ(y.L, 2);
}
