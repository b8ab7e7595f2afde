#include "report/sphere/SphereOperations.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"

namespace {

constexpr double kInterpolation = 2e-4;  // of low harmonics on maps of 2 or 3 degrees

/// Largest deviation of the image from f, for theta up to `last` (radians).
template <class Function>
double Deviation(const SphereImage& image, double last, Function f) {
    double worst = 0.0;
    for (double theta = 0.0; theta <= last; theta += 1.7 * kDegree) {
        for (double phi = 0.0; phi < 6.28; phi += 0.11)
            worst = std::max(worst, std::abs(image.Value(theta, phi) - At(f, theta, phi)));
    }
    return worst;
}

TEST(SymmetryAverage, KeepsWhatHasTheSymmetry) {
    const auto twofold = [](double x, double y, double z) { return 1 + z + x * y; };
    const auto rest = [](double, double, double z) { return 1 + z; };
    const auto skew = [](double x, double y, double z) { return 1 + z + x * x - y * y + x * y; };
    for (const SphereMap map : kMaps) {
        const SphereImage image = Sampled(map, 2.0, skew);
        EXPECT_LT(Deviation(SymmetryAverage(image, 2, {}), image.MaxTheta(), skew), kInterpolation);
        EXPECT_LT(Deviation(SymmetryAverage(image, 4, {}), image.MaxTheta(), rest), kInterpolation);
        EXPECT_LT(Deviation(SymmetryAverage(image, 3, {}), image.MaxTheta(), rest), kInterpolation);
        EXPECT_LT(Deviation(SymmetryAverage(image, 1, 45 * kDegree), image.MaxTheta(), twofold),
                  kInterpolation);
    }
}

// The mean over a cone of a harmonic of degree l: Legendre's polynomial integrated by its recurrence
// (2l + 1) P_l = P'_{l+1} - P'_{l-1}, with the addition theorem for the directions around the axis.
TEST(AcceptanceAverage, DampsHarmonicsByTheClosedForm) {
    const auto harmonics = [](double x, double y, double z) {
        return std::vector<double>{1.0, z, x * y, x * y * z, x * (4 * z * z - x * x - y * y)};
    };
    const int degrees[] = {0, 1, 2, 3, 3};
    const double halfAngle = 12 * kDegree;
    const double c = std::cos(halfAngle);
    for (const SphereMap map : kMaps) {
        for (std::size_t i = 0; i < std::size(degrees); ++i) {
            const auto l = static_cast<unsigned>(degrees[i]);
            const double factor =
                l == 0 ? 1.0 : (std::legendre(l - 1, c) - std::legendre(l + 1, c)) / ((2 * l + 1) * (1 - c));
            const auto f = [&](double x, double y, double z) { return harmonics(x, y, z)[i]; };
            const SphereImage mean = AcceptanceAverage(Sampled(map, 3.0, f), halfAngle);
            EXPECT_LT(Deviation(mean, 70 * kDegree,
                                [&](double x, double y, double z) { return factor * f(x, y, z); }),
                      kInterpolation)
                << "l=" << l;
        }
    }
}

// At the horizon half of the cone counts; there z = sin(a) cos(b) averages to the value below.
TEST(AcceptanceAverage, SeesNothingBelowTheHorizon) {
    const double a = 10 * kDegree;
    const double expected = (a - std::sin(a) * std::cos(a)) / (kPi * (1 - std::cos(a)));
    for (const SphereMap map : kMaps) {
        const auto height = [](double, double, double z) { return z; };
        const SphereImage mean = AcceptanceAverage(Sampled(map, 2.0, height), a);
        EXPECT_NEAR(mean.Value(90 * kDegree, 1.0), expected,
                    0.02 * expected);  // quadrature cut by the horizon
    }
    EXPECT_NE(ErrorText([] { AcceptanceAverage(Sampled(kMaps[0], 2.0, [](auto...) { return 1.0; }), 1.0); }),
              "no failure");
}

TEST(Refracted, IsotropicSource) {
    const double energy = 100.0;
    const double potential = 15.0;
    const double ratio = (energy - potential) / energy;
    const auto isotropic = [](double, double, double) { return 1.0; };
    const auto outside = [&](double, double, double z) {
        return ratio * z / std::sqrt(1 - ratio * (1 - z * z));  // dOmega_in/dOmega_out
    };
    for (const SphereMap map : kMaps) {
        const SphereImage image = Refracted(Sampled(map, 1.0, isotropic), energy, potential);
        EXPECT_LT(Deviation(image, 90 * kDegree, outside), kInterpolation);
        // What leaves is what starts inside the cone of total reflection.
        double sum = 0.0;
        for (int i = 0; i < 900; ++i) {
            const double theta = (i + 0.5) * 0.1 * kDegree;
            sum += image.Value(theta, 0.3) * std::sin(theta) * 0.1 * kDegree;
        }
        EXPECT_NEAR(sum, 1 - std::sqrt(1 - ratio), 1e-4);
    }
}

TEST(Refracted, NeedsALowerPotential) {
    const SphereImage plain = Sampled(kMaps[0], 2.0, [](double x, double, double z) { return x + z; });
    EXPECT_EQ(Refracted(plain, 40.0, 0.0).Value(0.8, 0.1), plain.Value(0.8, 0.1));
    for (const double potential : {-1.0, 40.0, 50.0})
        EXPECT_NE(ErrorText([&] { Refracted(plain, 40.0, potential); }), "no failure") << potential;
}

}  // namespace
