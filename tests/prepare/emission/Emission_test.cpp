#include "prepare/emission/Emission.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "prepare/emission/EmitterField.h"
#include "prepare/emission/PhotonEnergy.h"

namespace {

const ScreeningTable kAtoms(QVRE_DATA "/screening_dhfs.csv");

EmissionRequest FreeAtom(const std::string& element, const std::string& level, double kinetic_eV,
                         CoreField core = CoreField::kSelfConsistent) {
    EmissionRequest request;
    request.core = core;
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
        const EmissionRequest request = FreeAtom(element, level, kinetic, CoreField::kAnalytical);
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
        EmissionRequest request = FreeAtom(element, level, 1.0, CoreField::kAnalytical);
        request.kinetic_eV = std::round(1500.0 - OrbitalBinding(request.atom, request.core, request.level));
        EXPECT_NEAR(CoreLevelEmission(request).source.channels.Beta(), beta, 0.005) << element << level;
    }
}

// Cross sections in Mb of J. J. Yeh, I. Lindau, At. Data Nucl. Data Tables 32, 1 (1985), who solve for the
// atom's self-consistent field with Slater's exchange without relativity.
TEST(Emission, CrossSections) {
    struct Published {
        const char* element;
        const char* level;
        double photon_eV;
        double sigma_Mb;
    };
    constexpr double kTable = 0.03;
    constexpr double kRelativity = 0.08;  // of W and Au
    const Published table[] = {
        {"C", "1s", 600.0, 0.168},    {"O", "1s", 600.0, 0.4119},   {"Al", "2s", 600.0, 0.07},
        {"Al", "2p", 600.0, 0.123},   {"Si", "2p", 600.0, 0.1776},  {"Si", "2s", 600.0, 0.084},
        {"Cu", "2s", 1253.6, 0.098},  {"Cu", "2p", 1253.6, 0.5345}, {"Cu", "3s", 600.0, 0.062},
        {"Cu", "3p", 600.0, 0.2319},  {"Ge", "3p", 600.0, 0.2958},  {"Ge", "3d", 600.0, 0.3438},
        {"Ag", "3p", 1486.6, 0.1651}, {"Ag", "3d", 1253.6, 0.4052}, {"Ag", "4d", 600.0, 0.1896},
        {"Ag", "4p", 600.0, 0.1322},  {"W", "4f", 600.0, 1.778},    {"W", "4d", 600.0, 0.6877},
        {"Au", "4f", 600.0, 2.599},   {"Au", "4d", 1041.0, 0.471}};
    for (const auto& [element, level, photon_eV, sigma_Mb] : table) {
        const ScreenedAtom& atom = kAtoms.Find(element);
        const double sigma =
            CrossSection_Mb(atom, CoreField::kSelfConsistent, ParseCoreLevel(level), photon_eV);
        EXPECT_NEAR(sigma / sigma_Mb, 1.0, atom.atomicNumber > 70 ? kRelativity : kTable) << element << level;
    }
}

// The lines of a pair share the cross section of the level by 2j + 1; below the threshold there is none.
TEST(Emission, CrossSectionsOfLines) {
    const auto sigma = [](const char* level, double photon_eV) {
        return CrossSection_Mb(kAtoms.Find("Cu"), CoreField::kAnalytical, ParseCoreLevel(level), photon_eV);
    };
    EXPECT_NEAR(sigma("2p3/2", 1486.6) / sigma("2p", 1486.6), 2.0 / 3.0, 1e-12);
    EXPECT_NEAR(sigma("2p1/2", 1486.6) / sigma("2p", 1486.6), 1.0 / 3.0, 1e-12);
    EXPECT_EQ(sigma("2p", 900.0), 0.0);
}

TEST(Emission, WeightIsTheIntensity) {
    EmissionRequest request = FreeAtom("Cu", "3d", 1480.0);
    request.weight = 0.25;
    const std::vector<EmittedWave> waves =
        WavesUnder(CoreLevelEmission(request).source, UnpolarisedLight({0.0, 1.0, 1.0}));
    ASSERT_EQ(waves.size(), 10U);
    double sum = 0.0;
    for (const EmittedWave& wave : waves) {
        EXPECT_EQ(wave.Ratio, 1.0);
        for (const auto& a : wave.coeff.block) sum += std::norm(a);
    }
    EXPECT_NEAR(sum, kPi, 1e-12);
}
