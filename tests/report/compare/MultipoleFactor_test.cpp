#include "report/compare/MultipoleFactor.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Constants.h"

using namespace qvre;

namespace {

double Harmonic(int l, int m, double theta, double phi) {
    return std::assoc_legendre(static_cast<unsigned>(l), static_cast<unsigned>(m),
                               std::cos(theta * kDegree)) *
           std::cos(m * phi * kDegree);
}

struct Compared {
    /// a(theta, phi) and b on rings 2 degrees apart; the denser a ring the more points it has.
    template <class A, class B>
    static double Factor(const A& a, const B& b) {
        std::vector<double> theta;
        std::vector<double> phi;
        std::vector<double> chiA;
        std::vector<double> chiB;
        for (int ring = 1; ring < 90; ring += 2) {
            const int points = 80 + ring;
            for (int i = 0; i < points; ++i) {
                theta.push_back(ring);
                phi.push_back(360.0 * i / points);
                chiA.push_back(a(theta.back(), phi.back()));
                chiB.push_back(b(theta.back(), phi.back()));
            }
        }
        return MultipoleFactor(theta, phi, chiA, chiB);
    }
};

TEST(MultipoleFactor, ClosedForms) {
    constexpr double kRings = 2e-3;  // sums over rings 2 degrees apart stand for integrals
    const auto low = [](double theta, double phi) { return Harmonic(6, 2, theta, phi); };
    const auto other = [](double theta, double phi) { return Harmonic(6, 4, theta, phi); };
    const auto half = [&](double theta, double phi) { return 0.5 * low(theta, phi); };
    EXPECT_EQ(Compared::Factor(low, low), 0.0);
    EXPECT_NEAR(Compared::Factor(low, half), 0.25 / 1.25, 1e-12);
    EXPECT_NEAR(Compared::Factor(low, other), 1.0, kRings);
    // Of the same norm, whether it turns or not: integral of q^2 over that of (p + q)^2 + p^2.
    const auto round = [](double theta, double phi) { return Harmonic(6, 0, theta, phi); };
    const auto both = [&](double theta, double phi) {
        return round(theta, phi) + low(theta, phi) / std::sqrt(840.0);
    };
    EXPECT_NEAR(Compared::Factor(both, round), 1.0 / 3.0, 0.01);
    // Structure of 40 periods around the normal is beyond the multipoles.
    const auto noisy = [&](double theta, double phi) {
        return low(theta, phi) + std::cos(40 * phi * kDegree);
    };
    EXPECT_NEAR(Compared::Factor(low, noisy), 0.0, kRings);
}

}  // namespace
