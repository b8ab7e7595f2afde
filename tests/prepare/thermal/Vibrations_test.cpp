#include "prepare/thermal/Vibrations.h"

#include <gtest/gtest.h>

#include <limits>

#include "ErrorText.h"
#include "TempFolder.h"
#include "input/ZfAtomName.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/MeanSquareDisplacement.h"

namespace {

const std::string kData = QVRE_DATA;

std::string Refusal(const VibrationRequest& request) {
    return ErrorText([&] { MakeFluctuation(request, DebyeTable(kData + "/debye_temperatures.csv")); });
}

}  // namespace

// Tabulated values of the Debye function phi(x) (M. Abramowitz, I. A. Stegun, section 27.1), the zero-point
// term alone at T = 0, and the formula of a run with its first correction when it is hot.
TEST(DebyeIntegralUiso, KnownValues) {
    const ZfDebye weights = LoadAtomicWeights(kData + "/AtomicWeight.txt");
    constexpr std::int32_t kCu = 29;
    constexpr double kTheta = 343.0;
    const double unit = weights.CalcUiso(kTheta, kCu, kTheta);
    const auto inUnits = [&](double t) { return DebyeIntegralUiso(t, kCu, kTheta, weights) / unit; };
    EXPECT_DOUBLE_EQ(inUnits(0.0), 0.25);
    EXPECT_NEAR(inUnits(kTheta), 0.25 + 0.7775046341, 1e-9);
    EXPECT_NEAR(inUnits(kTheta / 10.0), 0.25 + 0.1644434657 / 10.0, 1e-9);
    const double x = 0.05;
    EXPECT_NEAR(inUnits(kTheta / x) * x, 1.0 + x * x / 36.0, 1e-8);
}

TEST(DebyeTable, HoldsElementsOnly) {
    const DebyeTable table(kData + "/debye_temperatures.csv");
    const ZfDebye weights = LoadAtomicWeights(kData + "/AtomicWeight.txt");
    std::size_t known = 0;
    for (std::int32_t z = 1; z <= 103; ++z) {
        ZfAtomName name;
        name.SetAtomicNumber(z);
        if (table.Find(name.name)) ++known;
    }
    EXPECT_EQ(known, 62U);  // lines of the table: each is found under a symbol
    EXPECT_EQ(table.Find("Hg"), 71.9);
    const TempFolder folder;
    const std::string damaged = folder.Write("t.csv", "element,debye_K\nCu,hot\n");
    EXPECT_EQ(ErrorText([&] { DebyeTable{damaged}; }), damaged + ": Cu: \"hot\" is no number");
}

TEST(MakeFluctuation, RefusesWhatARunWouldNotTake) {
    EXPECT_EQ(Refusal({.elements = {"Cu"}, .debyeTemperature_K = {{"Cu", 315.0}}}), "no failure");
    EXPECT_EQ(Refusal({.elements = {"F"}}),
              "F has no Debye temperature in the table: give one as debye, such as F = 300");
    EXPECT_EQ(Refusal({.elements = {"CU"}}),
              "There is no element \"CU\": write symbols as in Cu, case counts");
    EXPECT_EQ(Refusal({.elements = {"Cu"}, .debyeTemperature_K = {{"Si", 645.0}}}),
              "There is a Debye temperature for Si, which is not among the elements: leave it out");
    EXPECT_EQ(Refusal({.elements = {"Cu"}, .debyeTemperature_K = {{"Cu", 0.0}}}),
              "The Debye temperature of Cu has to be above 0 and up to 10000 kelvin, not 0");
    // Before the elements are known.
    EXPECT_EQ(ErrorText([] {
                  CheckVibrations({.debyeTemperature_K = {{"Xx", 300.0}}});
              }),
              "There is no element \"Xx\": write symbols as in Cu, case counts");
    EXPECT_EQ(ErrorText([] { CheckVibrations({.debyeTemperature_K = {{"Si", 645.0}}}); }), "no failure");
    EXPECT_EQ(Refusal({.temperature_K = 10000.0, .elements = {"Cu"}}), "no failure");
    for (const double temperature_K : {-1.0, 10001.0, std::numeric_limits<double>::quiet_NaN()})
        EXPECT_TRUE(Refusal({.temperature_K = temperature_K, .elements = {"Cu"}})
                        .starts_with("The temperature has to be from 0 to 10000 kelvin, not "))
            << temperature_K;
}
