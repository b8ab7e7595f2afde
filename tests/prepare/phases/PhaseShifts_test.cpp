#include "prepare/phases/PhaseShifts.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Vec3.h"
#include "prepare/cluster/CrystalSources.h"
#include "scattering/SamplingSphere.h"

namespace {

const ScreeningTable& Fields() {
    static const ScreeningTable table(QVRE_DATA "/screening_dhfs.csv");
    return table;
}

PhaseShiftRequest Crystal(const std::string& element, const std::string& structure, double a,
                          double energy_eV) {
    PhaseShiftRequest request;
    request.species = SurroundingsInCrystal(PresetCell(structure, {element}, {a}));
    request.energies_eV = {energy_eV};
    return request;
}

}  // namespace

// Values calculated with another program: an independent integration, to 0.001 degrees and 0.001 eV.
TEST(PhaseShifts, OfKnownCrystals) {
    using Crystals =
        std::vector<std::tuple<const char*, const char*, double, double, double, std::vector<double>>>;
    const Crystals crystals = {
        {"C", "diamond", 3.567, 200, -14.367, {138.2130, 67.2340, 29.8716, 12.7129, 4.1154, 0.9677}},
        {"Al", "fcc", 4.05, 1500, -7.055, {151.1704, 93.1070, 61.0578, 43.1588, 32.2499, 25.0449}},
        {"Si", "diamond", 5.43, 600, -6.950, {204.6427, 125.2447, 73.7277, 47.2528, 32.3503, 22.9854}},
        {"Cu", "fcc", 3.61, 560, -5.745, {333.6059, 235.7118, 140.4344, 72.15595, 38.85159, 22.70312}},
        {"W", "bcc", 3.16, 200, -9.265, {670.5704, 552.2215, 405.6663, 227.6376, 58.15272, 25.21478}}};
    for (const auto& [element, structure, a, energy, zero, degrees] : crystals) {
        const auto result = CalculatePhaseShifts(Crystal(element, structure, a, energy), Fields());
        EXPECT_NEAR(result.rows[0].zero_eV, zero, 6e-4) << element;
        for (std::size_t l = 0; l < degrees.size(); ++l)
            EXPECT_NEAR(result.rows[0].list.degrees[l], degrees[l], 1e-3) << element << " l=" << l;
    }
}

// The size of the corrections grows as Z^2 inside; roughly 3 and 1.5 degrees for Cu, 25 and 14 for Au.
TEST(PhaseShifts, RelativisticCorrections) {
    const std::tuple<const char*, double, double, double> metals[] = {{"Cu", 3.61, 3.0, 1.5},
                                                                      {"Au", 4.08, 25.0, 14.0}};
    for (const auto& [element, a, s, p] : metals) {
        PhaseShiftRequest request = Crystal(element, "fcc", a, 1000.0);
        const auto plain = CalculatePhaseShifts(request, Fields()).rows[0].list.degrees;
        request.equation = RadialEquation::kScalarRelativistic;
        const auto heavy = CalculatePhaseShifts(request, Fields()).rows[0].list.degrees;
        EXPECT_NEAR(heavy[0] - plain[0], s, 0.1 * s) << element;
        EXPECT_NEAR(heavy[1] - plain[1], p, 0.1 * p) << element;
    }
}

TEST(PhaseShifts, RadialTablesJoinTheFreeWave) {
    PhaseShiftRequest request = Crystal("Cu", "fcc", 3.61, 560.0);
    request.radialPoints = 300;
    const PhaseShiftResult result = CalculatePhaseShifts(request, Fields());
    const PhaseShiftRecord& record = result.document.records[0];
    ASSERT_EQ(record.radial.P.size(), 14U);
    const double radius = std::exp(record.radial.LnX.back());
    EXPECT_NEAR(radius * 1e10, 3.61 * std::sqrt(0.125) * 1.0001, 2e-5);
    // A radius that is asked for stays, and the wave goes on beyond it.
    request.radius_angstrom = {{"Cu", 3.61 * std::sqrt(0.125)}};
    const PhaseShiftRecord at = CalculatePhaseShifts(request, Fields()).document.records[0];
    const double further = record.radial.LnX.back() - at.radial.LnX.back();
    EXPECT_NEAR(further, 1e-4, 1.1e-5);
    EXPECT_NEAR(record.radial.P[2].back(), at.radial.P[2].back() + further * at.radial.L[2].back(), 1e-9);
    // q = dp/dlnr, by central differences of p on the grid.
    const std::vector<double>& x = record.radial.LnX;
    for (const std::size_t l : {0U, 2U, 13U}) {
        const std::vector<double>& p = record.radial.P[l];
        EXPECT_NEAR((p[151] - p[149]) / (x[151] - x[149]), record.radial.L[l][150],
                    5e-3 * std::abs(record.radial.L[l][150]) + 1e-9);
    }
}

TEST(PhaseShiftFile, EndsAtTheLastLargePhase) {
    PhaseShiftList list{"Cu", "Cu", 560.0, {90, 0.1, 1.0, 0.29, 180.31, 0.2, 180.1, 359.9}, 1.276, 2.553, ""};
    std::vector<std::string> warnings;
    EXPECT_EQ(LimitedSize(list, {}, warnings), 5);
    EXPECT_EQ(LimitedSize(list, {2, 0.3, 0.8}, warnings), 3);
    EXPECT_EQ(LimitedSize(list, {20, 100.0, 0.8}, warnings), 1);
    EXPECT_TRUE(warnings.empty());
    // An atom is known by the radius in metres.
    EXPECT_NEAR(std::exp(MakePhaseShiftRecord(list, 5).radial.LnX.back()), 1.276e-10, 1e-20);
}

TEST(PhaseShiftFile, StaysAwayFromTheNeighbours) {
    PhaseShiftList list{"Cu", "Cu", 100.0, std::vector<double>(21, 1.0), 1.276, 2.553, ""};
    std::vector<std::string> warnings;
    const std::int32_t size = LimitedSize(list, {}, warnings);
    EXPECT_LE(LastSamplingRadius(size, 100.0), 0.8 * 2.553e-10);
    EXPECT_GT(LastSamplingRadius(size + 1, 100.0), 0.8 * 2.553e-10);
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_NE(warnings[0].find("Cu at 100 eV: l size cut from 21 to"), std::string::npos) << warnings[0];
}

TEST(PhaseShiftFile, HoldsAsManyRecordsAsADocument) {
    std::vector<double> energies;
    for (int i = 1; i <= 64; ++i) energies.push_back(i);
    EXPECT_EQ(ErrorText([&] { CheckEnergies(energies, 2); }), "no failure");
}
