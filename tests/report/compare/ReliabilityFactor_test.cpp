#include "report/compare/ReliabilityFactor.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"

namespace {

using Numbers = std::vector<double>;

const Numbers kOnes(4, 1.0);

// Two functions of one shape and of none in common, where R and the scale have closed forms.
TEST(ReliabilityFactor, ClosedForms) {
    const Numbers a = {1.0, -1.0, 2.0, -2.0};
    const Numbers third = {3.0, -3.0, 6.0, -6.0};
    const Agreement scaled = CompareModulations(a, third, kOnes);
    EXPECT_DOUBLE_EQ(scaled.R, 4.0 / 10.0);
    EXPECT_DOUBLE_EQ(scaled.scale, 1.0 / 3.0);
    EXPECT_NEAR(scaled.scaledR, 0.0, 1e-30);
    EXPECT_DOUBLE_EQ(scaled.correlation, 1.0);

    const Agreement unrelated = CompareModulations(a, {2.0, -2.0, -1.0, 1.0}, kOnes);
    EXPECT_DOUBLE_EQ(unrelated.R, 1.0);
    EXPECT_DOUBLE_EQ(unrelated.correlation, 0.0);

    const Agreement opposed = CompareModulations(a, {-1.0, 1.0, -2.0, 2.0}, kOnes);
    EXPECT_DOUBLE_EQ(opposed.R, 2.0);
    EXPECT_EQ(opposed.scale, 0.0);
    EXPECT_DOUBLE_EQ(opposed.scaledR, 1.0);
    EXPECT_DOUBLE_EQ(opposed.correlation, -1.0);
}

TEST(ReliabilityFactor, ScaleIsTheBestOneAndWeightsCountPoints) {
    const Numbers a = {0.3, -0.2, 0.5, -0.7};
    const Numbers b = {0.5, 0.1, 0.4, -0.9};
    const Agreement best = CompareModulations(a, b, kOnes);
    for (const double factor : {0.99, 1.01}) {
        Numbers other = b;
        for (double& value : other) value *= best.scale * factor;
        EXPECT_GT(CompareModulations(a, other, kOnes).R, best.scaledR) << factor;
    }
    const Agreement weighted = CompareModulations(a, b, {1.0, 1.0, 1.0, 2.0});
    const Agreement repeated =
        CompareModulations({0.3, -0.2, 0.5, -0.7, -0.7}, {0.5, 0.1, 0.4, -0.9, -0.9}, Numbers(5, 1.0));
    EXPECT_DOUBLE_EQ(weighted.R, repeated.R);
    EXPECT_DOUBLE_EQ(weighted.correlation, repeated.correlation);
}

TEST(ReliabilityFactor, RefusesWhatHasNoShape) {
    EXPECT_EQ(ErrorText([] { CompareModulations({1}, {2}, {1}); }),
              "The patterns have fewer than 2 directions in common: widen the polar range");
}

}  // namespace
