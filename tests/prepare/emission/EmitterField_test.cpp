#include "prepare/emission/EmitterField.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "prepare/cluster/CrystalSources.h"
#include "scattering/Tables.h"

namespace {

const ScreeningTable kAtoms(QVRE_DATA "/screening_dhfs.csv");

DipoleSource SourceInCrystal(const std::vector<AtomSurroundings>& species, const std::string& element,
                             const std::string& level, double kinetic_eV) {
    PhaseShiftRequest crystal;
    crystal.species = species;
    EmissionRequest request;
    request.core = CoreField::kAnalytical;
    request.atom = kAtoms.Find(element);
    request.level = ParseCoreLevel(level);
    request.kinetic_eV = kinetic_eV;
    SetCrystalField(request, crystal, element, kAtoms);
    return CoreLevelEmission(request).source;
}

/// The largest difference between the coefficients and those of an example.
double DifferenceFromFile(const std::vector<EmittedWave>& waves, const std::string& name) {
    std::vector<EmittedWave> example;
    ZfLoadEmittedWave(example, QVRE_EXAMPLES "/" + name);
    EXPECT_EQ(waves.size(), example.size()) << name;
    double largest = 0.0;
    for (std::size_t i = 0; i < std::min(waves.size(), example.size()); ++i) {
        EXPECT_EQ(waves[i].Ek, example[i].Ek) << name;
        largest = std::max(largest, Difference(waves[i].coeff, example[i].coeff));
    }
    return largest;
}

void ExpectChannels(const DipoleChannels& channels, const DipoleChannels& expected, double rhoDigits) {
    constexpr double kPhase = 1e-3 * kDegree;
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_NEAR(channels.rho[i], expected.rho[i], rhoDigits);
        EXPECT_NEAR(channels.delta[i], Radians(expected.delta[i]), kPhase);
    }
}

}  // namespace

// The README of the example gives radial integrals, phases (degrees) and beta; its files hold 6 digits.
TEST(EmitterField, Copper2pOfTheExample) {
    const auto species = SurroundingsInCrystal(PresetCell("fcc", {"Cu"}, {3.61}));
    const DipoleSource source = SourceInCrystal(species, "Cu", "2p", 560.0);
    ExpectChannels(source.channels, {1, {0.0027916, 0.012996}, {333.606, 140.434}}, 5e-7);
    EXPECT_NEAR(source.channels.Beta(), 1.386, 5e-4);
    EXPECT_LT(
        DifferenceFromFile(WavesUnder(source, LinearLight({0.0, 0.0, 1.0})), "cu001_small/emitter.xml_emt"),
        1e-5);
    const auto ray = WavesUnder(source, UnpolarisedLight({0.0, 0.0, 1.0}));
    EXPECT_LT(DifferenceFromFile(ray, "cu001_small/emitter_normal_incidence.xml_emt"), 1e-5);
    EXPECT_LT(DifferenceFromFile(IsotropicEmission(560.0, 1.0), "cu001_small/emitter_s.xml_emt"), 2e-6);
}

// The smaller radial integral is the rest of a hundredfold cancellation; the example has it to 1e-3.
TEST(EmitterField, Arsenic3dOfTheExample) {
    const auto species = SurroundingsInCrystal(PresetCell("zincblende", {"As", "Ga"}, {5.653}));
    const DipoleSource source = SourceInCrystal(species, "As", "3d", 1455.0);
    ExpectChannels(source.channels, {2, {0.0004216, 0.0023134}, {218.540, 93.380}}, 6e-7);
    EXPECT_NEAR(source.channels.Beta(), 1.033, 5e-4);
    EXPECT_LT(DifferenceFromFile(WavesUnder(source, LinearLight({0.0, 0.0, 1.0})), "gaas001/emitter.xml_emt"),
              3e-4);
}
