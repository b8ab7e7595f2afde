#include "report/compare/Measurement.h"

#include <gtest/gtest.h>

#include "ErrorText.h"
#include "report/compare/MeasuredPattern.h"

using namespace qvre;

namespace {

using Numbers = std::vector<double>;

/// Two rings of two points, of means 100 and 400.
MeasuredPattern Counts() {
    MeasuredPattern pattern;
    pattern.theta = {10, 10, 20, 20};
    pattern.phi = {0, 90, 0, 90};
    pattern.intensity = {64, 136, 400, 400};
    return pattern;
}

void ExpectNear(const Numbers& found, const Numbers& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_NEAR(found[i], expected[i], 1e-12) << i;
}

WeightedModulation Modulated(const MeasuredPattern& pattern, SigmaSource sigma,
                             std::optional<BackgroundModel> model = BackgroundModel{}) {
    return ModulationOf(PointsOf(pattern, "a.csv", 0, 90, model.has_value(), sigma), model);
}

// chi = I/B - 1 is known to sigma/B; weights are 1/sigma^2, of mean 1.
TEST(Measurement, WeighsWithTheVarianceOfChi) {
    MeasuredPattern pattern = Counts();
    const WeightedModulation plain = Modulated(pattern, SigmaSource::kNone);
    ExpectNear(plain.chi, {-0.36, 0.36, 0, 0});
    ExpectNear(plain.weight, {1, 1, 1, 1});
    // sqrt(64)/100, sqrt(136)/100, 20/400 twice: 1/sigma^2 is 156.25, 73.529..., 400, 400.
    const double mean = (1e4 / 64 + 1e4 / 136 + 800) / 4;
    ExpectNear(Modulated(pattern, SigmaSource::kCounts).weight,
               {1e4 / 64 / mean, 1e4 / 136 / mean, 400 / mean, 400 / mean});
    pattern.sigma = {10, 10, 40, 80};  // over B: 0.1, 0.1, 0.1, 0.2
    ExpectNear(Modulated(pattern, SigmaSource::kColumn).weight, {4 / 3.25, 4 / 3.25, 4 / 3.25, 1 / 3.25});
    // The same as chi of the table.
    pattern.chi = plain.chi;
    const WeightedModulation column = Modulated(pattern, SigmaSource::kColumn, std::nullopt);
    ExpectNear(column.chi, plain.chi);
    ExpectNear(column.weight, {4 / 3.25, 4 / 3.25, 4 / 3.25, 1 / 3.25});
    // In a table of chi alone sigma is that of chi.
    pattern.intensity.clear();
    pattern.sigma = {1, 1, 1, 2};
    ExpectNear(Modulated(pattern, SigmaSource::kColumn, std::nullopt).weight,
               {4 / 3.25, 4 / 3.25, 4 / 3.25, 1 / 3.25});
    // No counts weigh like one.
    pattern = Counts();
    pattern.intensity = {0, 2, 1, 1};
    ExpectNear(Modulated(pattern, SigmaSource::kCounts).weight, {4 / 3.5, 4 / 7.0, 4 / 3.5, 4 / 3.5});
}

TEST(Measurement, Refusals) {
    MeasuredPattern pattern = Counts();
    EXPECT_EQ(ErrorText([&] { Modulated(pattern, SigmaSource::kColumn); }),
              "a.csv has no column sigma: leave sigma out, or take it from the counts");
    pattern.sigma = {1, 1, 0, 1};
    EXPECT_EQ(ErrorText([&] { Modulated(pattern, SigmaSource::kColumn); }),
              "a.csv: sigma is not positive at theta 20, phi 0");
    pattern.chi = pattern.sigma;
    pattern.intensity.clear();
    EXPECT_EQ(ErrorText([&] { Modulated(pattern, SigmaSource::kCounts, std::nullopt); }),
              "a.csv has no column of counts, whose square roots could be their sigma");
    pattern = Counts();
    pattern.theta = {10, 20, 30, 30};  // two stand alone
    EXPECT_EQ(
        ErrorText([&] { Modulated(pattern, SigmaSource::kNone); }),
        "Most polar angles have a single point, as in a polar scan: means over the azimuth would take the "
        "whole pattern away. Take a polynomial in the polar angle as background, such as 3");
    pattern.theta = {10, 30, 30, 30};  // one, such as the normal, may
    EXPECT_NO_THROW(Modulated(pattern, SigmaSource::kNone));
    pattern.intensity = {-1, 5, 5, 5};
    EXPECT_EQ(
        ErrorText([&] { Modulated(pattern, SigmaSource::kNone); }),
        "The background is not positive at the polar angle 10 degrees: choose another background or another "
        "polar range");
}

}  // namespace
