#include "prepare/atomic/ContinuumWave.h"

#include <gtest/gtest.h>

#include <cmath>

#include "foundation/Constants.h"
#include "prepare/atomic/MuffinTin.h"

using namespace qvre;

namespace {

constexpr double kIntegration = 1e-3 * kDegree;  // what the header promises

ContinuumRequest Request(const RadialPotential& potential, double energy_eV, double radius = 2.4) {
    return {potential, radius, energy_eV, 12, RadialEquation::kSchroedinger, {}};
}

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
            EXPECT_NEAR(wave.u[row][middle],
                        wave.r[middle] * std::sph_bessel(static_cast<unsigned>(l), wave.k * wave.r[middle]),
                        1e-5);
        }
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
