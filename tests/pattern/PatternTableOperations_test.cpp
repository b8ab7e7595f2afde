#include "pattern/PatternTableOperations.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"

namespace {

ZfLDoubleMatrix Line(const std::vector<double>& values) {
    ZfLDoubleMatrix table(1, static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), table.Data());
    return table;
}

double Factor(std::vector<double> values, double distance, int type) {
    ZfLDoubleMatrix table = Line(values);
    const std::vector<double> factors = Normalise(table, Line({distance}), type);
    for (std::size_t j = 0; j < values.size(); ++j)
        EXPECT_DOUBLE_EQ(table.Data()[j], factors.at(0) * values[j]) << type;
    return factors.at(0);
}

TEST(PatternTableOperations, NormalisationFactors) {
    const std::vector<double> line = {9.0, 1.0, 4.0, 4.0, 2.0, 3.0};
    EXPECT_DOUBLE_EQ(Factor(line, 2.5e-10, 0), 2.5);
    EXPECT_DOUBLE_EQ(Factor(line, 2.5e-10, 1), 1.0);
    EXPECT_DOUBLE_EQ(Factor(line, 2.5e-10, 2), 1 / std::sqrt(127.0));
    EXPECT_DOUBLE_EQ(Factor(line, 2.5e-10, 3), 0.25);  // neither end is a maximum
    EXPECT_DOUBLE_EQ(Factor(line, 4e-10, 5), 2.0);
    EXPECT_EQ(Factor({3.0, 2.0, 1.0, 1.0}, 1e-10, 3), HUGE_VAL);
    // Two intervals of d = 2: weights exp(-16), exp(-4), 1, squared in the sum.
    EXPECT_DOUBLE_EQ(Factor({5.0, 7.0, 2.0}, 1e-10, 4), 1 / (25 * std::exp(-32.0) + 49 * std::exp(-8.0) + 4));
    for (const int type : {-1, 6})
        EXPECT_EQ(ErrorText([=] { Factor({1.0}, 1.0, type); }),
                  "Undefined normalisation type:" + std::to_string(type));
}

TEST(PatternTableOperations, InterferenceAndItsLimits) {
    const ZfLDoubleMatrix direct = Line({4.0, 4.0, 0.0, 4.0});
    const ZfLDoubleMatrix scattered = Line({1.0, 1.0, 1.0, 0.0});
    const ZfLDoubleMatrix total = Line({9.0, 1.0, 1.0, 4.0});  // in phase, opposed, one wave alone
    const double phase[] = {1.0, -1.0, 0.0, 0.0};
    const double chi[] = {1.25, -0.75, 0.0, 0.0};
    const double againstLast[] = {-0.5, 0.5, 0.5, 0.0};
    for (int j = 0; j < 4; ++j) {
        EXPECT_DOUBLE_EQ(InterferencePhase(total, direct, scattered).ValueAt(0, j), phase[j]) << j;
        EXPECT_DOUBLE_EQ(ModulationFunction(total, direct).ValueAt(0, j), chi[j]) << j;
        EXPECT_DOUBLE_EQ(CompareToLast(total).ValueAt(0, j), againstLast[j]) << j;
    }
}

TEST(PatternTableOperations, Masks) {
    const double atEdge[] = {0.0, 0.0, 0.08};
    const double half[] = {std::sqrt(0.5), 0.5, 0.54};  // x = pi/2
    for (int type = 1; type <= 3; ++type) {
        ZfLDoubleMatrix table = Line({2.0, 2.0, 2.0, 2.0, 2.0});
        ApplyMask(table, type, {0.0});
        const double expected[] = {0.0, 0.0, atEdge[type - 1], half[type - 1], 1.0};
        for (int j = 0; j < 5; ++j) EXPECT_NEAR(table.ValueAt(0, j), 2 * expected[j], 1e-15) << type << j;
    }
    ZfLDoubleMatrix table = Line({2.0, 3.0});
    ApplyMask(table, 0, {});
    EXPECT_EQ(table.ValueAt(0, 0), 2.0);
    EXPECT_EQ(ErrorText([&] { ApplyMask(table, 4, {0.0}); }), "Proc Mask ERROR, undefined type:4");
}

// cos(6 pi (1 - z)) turns first at 1 - z = 1/6; the line of 0.1 is monotonic.
TEST(PatternTableOperations, FirstMinimumBesideTheForwardDirection) {
    ZfLDoubleMatrix table(2, 241);
    for (int j = 0; j < 241; ++j) {
        const double z = 2.0 * j / 240 - 1;
        table.At(0, j) = std::cos(6 * kPi * (1 - z));
        table.At(1, j) = std::cos(0.1 * (1 - z));
    }
    const std::vector<double> minima = FirstMinima(table);
    ASSERT_EQ(minima.size(), 2U);
    EXPECT_NEAR(minima[0], 1 - 1.0 / 6, 1e-12);
    EXPECT_EQ(minima[1], 0.0);
}

}  // namespace
