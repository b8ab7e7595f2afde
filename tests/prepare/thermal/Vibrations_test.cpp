#include "prepare/thermal/Vibrations.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/CommaTable.h"
#include "foundation/Text.h"
#include "input/ZfAtomName.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/MeanSquareDisplacement.h"

namespace {

const std::string kData = QVRE_DATA;

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
    std::size_t known = 0;
    for (std::int32_t z = 1; z <= 103; ++z) {
        ZfAtomName name;
        name.SetAtomicNumber(z);
        if (table.Find(name.name)) ++known;
    }
    EXPECT_EQ(known, 64U);  // lines of the table: each is found under a symbol
    const TempFolder folder;
    const std::string damaged = folder.Write("t.csv", "element,debye_K\nCu,hot\n");
    EXPECT_EQ(ErrorText([&] { DebyeTable{damaged}; }), damaged + ": Cu: \"hot\" is no number");
}

// The column of measured B factors, which the program does not read, at 295 K through the files of a run.
TEST(Vibrations, ReproduceMeasuredDisplacements) {
    constexpr double kMeasured = 0.01;  // Debye temperatures are rounded to 1 K
    const ZfDebye weights = LoadAtomicWeights(kData + "/AtomicWeight.txt");
    const DebyeTable table(kData + "/debye_temperatures.csv");
    const CommaTable measured = CommaTable::Load(kData + "/debye_temperatures.csv");
    VibrationRequest request;
    request.temperature_K = 295.0;
    std::vector<double> factors;
    for (const std::vector<std::string>& row : measured.rows)
        if (!row[measured.Column("B_angstrom2")].empty()) {
            request.elements.push_back(row[measured.Column("element")]);
            factors.push_back(TextToDouble(row[measured.Column("B_angstrom2")]));
        }
    ASSERT_GT(factors.size(), 20U);
    const Fluctuation fluctuation = MakeFluctuation(request, table, weights);
    for (std::size_t i = 0; i < factors.size(); ++i) {
        const std::string& element = request.elements[i];
        EXPECT_NEAR(ModelUiso(fluctuation, weights, element) * 1e20 * kBOfUiso / factors[i], 1.0, kMeasured)
            << element;
    }
}

// The formula of a run has no zero-point motion; the file makes up for it.
TEST(Vibrations, FollowTheWholeModelDownToLowTemperature) {
    const ZfDebye weights = LoadAtomicWeights(kData + "/AtomicWeight.txt");
    const DebyeTable table(kData + "/debye_temperatures.csv");
    VibrationRequest request;
    request.elements = {"Cu"};
    for (const double t : {4.0, 80.0, 700.0}) {
        request.temperature_K = t;
        const double uiso = ModelUiso(MakeFluctuation(request, table, weights), weights, "Cu");
        EXPECT_NEAR(uiso / DebyeIntegralUiso(t, 29, *table.Find("Cu"), weights), 1.0, 1e-12) << t;
    }
}

TEST(Vibrations, KeepWhatIsGiven) {
    const ZfDebye weights = LoadAtomicWeights(kData + "/AtomicWeight.txt");
    const DebyeTable table(kData + "/debye_temperatures.csv");
    VibrationRequest request;
    request.elements = {"O", "Ti", "Cu"};
    request.temperature_K = 77.0;
    request.uiso_angstrom2 = {{"O", 0.0057}, {"Ti", 0.0065}};
    request.debyeTemperature_K = {{"Cu", 343.0}};
    const Fluctuation made = MakeFluctuation(request, table, weights);
    EXPECT_NEAR(ModelUiso(made, weights, "O"), 0.0057e-20, 1e-33);
    EXPECT_NEAR(ModelUiso(made, weights, "Ti"), 0.0065e-20, 1e-33);
    EXPECT_EQ(made.DebyeTemperature_K_.at(2), 343.0);
    request.model = VibrationModel::kEinstein;
    EXPECT_EQ(ErrorText([&] { MakeFluctuation(request, table, weights); }),
              "Displacements by element need the model debye, which writes them");
}
