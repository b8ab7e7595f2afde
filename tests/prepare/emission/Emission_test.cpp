#include "prepare/emission/Emission.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "prepare/emission/EmitterField.h"

namespace {

const ScreeningTable kAtoms(QVRE_DATA "/screening_dhfs.csv");

EmissionRequest FreeAtom(const std::string& element, const std::string& level, double kinetic_eV) {
    EmissionRequest request;
    request.atom = kAtoms.Find(element);
    request.level = ParseCoreLevel(level);
    request.kinetic_eV = kinetic_eV;
    SetFreeAtomField(request);
    return request;
}

/// The radial integral of an orbital with r replaced by dV/dr / omega^2.
double AccelerationIntegral(const EmissionRequest& request, CoreOrbital orbital, int l) {
    ContinuumRequest continuum;
    continuum.potential = request.potential;
    continuum.radius = request.radius;
    continuum.energy_eV = request.kinetic_eV;
    continuum.lSize = l + 1;
    const double omega = request.kinetic_eV / kHartree_eV - orbital.energy;
    for (std::size_t i = 0; i < orbital.r.size(); ++i) {
        const double r = orbital.r[i];
        const double step = 1e-4 * r;
        const double slope = (request.potential(r + step) - request.potential(r - step)) / (2.0 * step);
        orbital.P[i] *= slope / (r * omega * omega);
    }
    return DipoleIntegral(orbital, SolveContinuum(continuum), l);
}

}  // namespace

// Both states lie in one field, so the dipole integrals of the length and the acceleration form are equal
// (S. Chandrasekhar, Astrophys. J. 102, 223 (1945)). That fails for a slip in either state or in the
// integral.
TEST(Emission, LengthFormEqualsAccelerationForm) {
    constexpr double kForm = 2e-5;
    for (const auto& [element, level, kinetic] :
         {std::tuple{"Cu", "2p", 560.0}, {"Cu", "3p", 1420.0}, {"Si", "2s", 1300.0}, {"As", "3d", 1455.0}}) {
        const EmissionRequest request = FreeAtom(element, level, kinetic);
        const Emission emission = CoreLevelEmission(request);
        for (std::size_t i = request.level.l == 0 ? 1 : 0; i < 2; ++i) {
            const int l = request.level.l + 2 * static_cast<int>(i) - 1;
            const double ratio =
                AccelerationIntegral(request, emission.orbital, l) / emission.source.channels.rho[i];
            EXPECT_NEAR(ratio, 1.0, kForm) << element << level << " l = " << l;
        }
    }
}

// The central field of S. T. Manson, J. W. Cooper, Phys. Rev. 165, 126 (1968), at a photon energy of 1500 eV.
TEST(Emission, AsymmetryOfFreeAtoms) {
    for (const auto& [element, level, beta] :
         {std::tuple{"Cu", "2p", 1.42}, {"Cu", "3p", 1.50}, {"Si", "2p", 1.02}, {"Si", "2s", 2.0}}) {
        EmissionRequest request = FreeAtom(element, level, 1.0);
        const double binding = -BoundOrbital(request.potential, request.level.n, request.level.l).energy;
        request.kinetic_eV = std::round(1500.0 - binding * kHartree_eV);
        EXPECT_NEAR(CoreLevelEmission(request).source.channels.Beta(), beta, 0.005) << element << level;
    }
}

TEST(Emission, WeightIsTheIntensity) {
    EmissionRequest request = FreeAtom("Cu", "3d", 1480.0);
    request.weight = 0.25;
    const std::vector<EmittedWave> waves = WavesUnder(CoreLevelEmission(request).source, UnpolarisedLight({0.0, 1.0, 1.0}));
    ASSERT_EQ(waves.size(), 10U);
    double sum = 0.0;
    for (const EmittedWave& wave : waves) {
        EXPECT_EQ(wave.Ratio, 1.0);
        for (const auto& a : wave.coeff.block) sum += std::norm(a);
    }
    EXPECT_NEAR(sum, kPi, 1e-12);
}
