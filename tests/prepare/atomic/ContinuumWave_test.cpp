#include "prepare/atomic/ContinuumWave.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Constants.h"
#include "prepare/atomic/MuffinTin.h"
#include "scattering/ZfSphericalBessel.h"

using namespace qvre;

namespace {

constexpr double kIntegration = 1e-3 * kDegree;  // what the header promises

ContinuumRequest Request(const RadialPotential& potential, double energy_eV, double radius = 2.4) {
    return {potential, radius, energy_eV, 12, RadialEquation::kSchroedinger, {}};
}

struct Bessel {
    Bessel(std::int32_t l, double x) {
        table.Calculate(l + 1, x);
        j = table.J(l);
        y = table.Y(l);
    }
    ZfSphericalBessel table;
    double j, y;
};

}  // namespace

TEST(ContinuumWave, FreeSpaceShiftsNothing) {
    for (const RadialEquation equation :
         {RadialEquation::kSchroedinger, RadialEquation::kScalarRelativistic}) {
        ContinuumRequest request = Request([](double) { return 0.0; }, 1400.0);
        request.equation = equation;
        const ContinuumWave wave = SolveContinuum(request);
        for (std::int32_t l = 0; l < 12; ++l) {
            const auto row = static_cast<std::size_t>(l);
            EXPECT_NEAR(wave.delta[row], 0.0, kIntegration) << "l=" << l;
            const std::size_t middle = wave.r.size() - 300;
            EXPECT_NEAR(wave.u[row][middle], wave.r[middle] * Bessel(l, wave.k * wave.r[middle]).j, 1e-5);
        }
    }
}

// The variable-phase equation (F. Calogero, Variable Phase Approach to Potential Scattering (1967)),
//     d(delta)/dr = -2 V/k (kr)^2 (cos(delta) j_l(kr) - sin(delta) y_l(kr))^2,
// gives the phase of a potential cut at r, without a wave and with the absolute branch.
TEST(ContinuumWave, VariablePhaseOfAnAtom) {
    const ScreeningTable table(QVRE_DATA "/screening_dhfs.csv");
    const SuperposedField field(table, "Si", {});
    const MuffinTinPotential potential{&field, ExchangeKind::kFurnessMcCarthy, 20.0, 0.0};
    const double radius = 2.2;
    const ContinuumWave wave = SolveContinuum(Request(potential, 20.0 * kHartree_eV, radius));
    const double k = std::sqrt(40.0);
    for (std::int32_t l = 0; l < 4; ++l) {
        const auto slope = [&](double x, double delta) {  // over ln r
            const double r = std::exp(x);
            const Bessel b(l, k * r);
            const double f = k * r * (std::cos(delta) * b.j - std::sin(delta) * b.y);
            return -2.0 * potential(r) / k * f * f * r;
        };
        constexpr int kSteps = 8000;
        double x = std::log(1e-5);
        const double h = (std::log(radius) - x) / kSteps;
        double delta = 0.0;
        for (int i = 0; i < kSteps; ++i, x += h) {
            const double a = slope(x, delta);
            const double b = slope(x + h / 2, delta + h / 2 * a);
            const double c = slope(x + h / 2, delta + h / 2 * b);
            const double d = slope(x + h, delta + h * c);
            delta += h / 6 * (a + 2 * b + 2 * c + d);
        }
        EXPECT_NEAR(wave.delta[static_cast<std::size_t>(l)], delta, kIntegration) << "l=" << l;
    }
}

TEST(ContinuumWave, GoesOnSmoothlyOutsideTheSphere) {
    const ScreeningTable table(QVRE_DATA "/screening_dhfs.csv");
    const SuperposedField field(table, "W", {});
    const MuffinTinPotential potential{&field, ExchangeKind::kSlater, 30.0, 0.0};
    for (const RadialEquation equation :
         {RadialEquation::kSchroedinger, RadialEquation::kScalarRelativistic}) {
        ContinuumRequest request = Request(potential, 30.0 * kHartree_eV);
        request.equation = equation;
        const ContinuumWave wave = SolveContinuum(request);
        for (std::int32_t l = 0; l < 12; ++l)
            EXPECT_NEAR(wave.u[static_cast<std::size_t>(l)].back(), wave.Outside(l, wave.radius), 1e-6) << l;
        EXPECT_GT(wave.u[0][10], 0.0);
    }
}
