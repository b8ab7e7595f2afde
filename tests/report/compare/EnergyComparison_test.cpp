#include "report/compare/EnergyComparison.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"

namespace {

constexpr double kRounding = 1e-10;

std::vector<double> Energies(double first, double last, double step) {
    std::vector<double> energies;
    for (double energy = first; energy < last + step / 2; energy += step) energies.push_back(energy);
    return energies;
}

template <class Function>
std::vector<double> Over(const std::vector<double>& energies, const Function& function) {
    std::vector<double> values;
    for (const double energy : energies) values.push_back(function(energy));
    return values;
}

/// chi of an emitter and an atom below it: path difference 4 angstrom, k in 1/angstrom.
double Oscillation(double kinetic_eV) {
    return 0.3 * std::cos(4.0 * 0.5123 * std::sqrt(kinetic_eV) + 0.7);
}

EnergyCurve Calculated(double theta, double phi, double size = 1.0) {
    EnergyCurve curve;
    curve.theta_deg = theta;
    curve.phi_deg = phi;
    curve.kinetic_eV = Energies(100, 400, 4);
    curve.intensity = Over(curve.kinetic_eV, [&](double e) { return 3.0 * (1.0 + size * Oscillation(e)); });
    curve.direct.assign(curve.kinetic_eV.size(), 3.0);
    return curve;
}

/// The same measured with a wrong zero of the energy and counts of another size.
MeasuredEnergyCurve Measured(double theta, double phi, double shift, double size = 1.0) {
    MeasuredEnergyCurve curve{theta, phi, Energies(130, 370, 3), {}};
    curve.value =
        Over(curve.kinetic_eV, [&](double e) { return 1e4 * (1.0 + size * Oscillation(e + shift)); });
    return curve;
}

const EnergyBackgroundModel kCubic = {3};
const EnergyBackgroundModel kSpline = {};
const ScanDirection kNormal = {0.0, 0.0};
const ScanDirection kAside = {30.0, 45.0};

}  // namespace

TEST(EnergyBackground, APolynomialTakesAllOfItsDegree) {
    const std::vector<double> energies = {100, 105, 111, 120, 140, 150, 175, 200, 260, 300};
    const std::vector<double> cubic =
        Over(energies, [](double e) { return 5.0 + (e - 180.0) * (e - 90.0) * (e - 400.0) * -1e-7; });
    for (const double chi : EnergyModulation(kCubic, energies, cubic)) EXPECT_NEAR(chi, 0.0, kRounding);
    double left = 0.0;
    for (const double chi : EnergyModulation({2}, energies, cubic)) left = std::max(left, std::abs(chi));
    EXPECT_GT(left, 1e-3);
    EXPECT_TRUE(std::isnan(EnergyModulation({0}, energies, std::vector<double>(energies.size(), -1.0))[0]));
}

// It solves f + (range/2 pi)^4 f^(4) = y with f^(2) and f^(3) zero at both ends, here f = u^4 (1 - u)^4 over
// the range 0 < u < 1.
TEST(EnergyBackground, ASplineKeepsWhatIsSlow) {
    const std::vector<double> uneven = {100, 105, 111, 120, 140, 150, 175, 200, 260, 300};
    const std::vector<double> line = Over(uneven, [](double e) { return 2.0 + 0.01 * e; });
    const std::vector<double> kept = EnergyBackground(kSpline, uneven, line);
    for (std::size_t i = 0; i < line.size(); ++i) EXPECT_NEAR(kept[i], line[i], kRounding);

    const auto smooth = [](double u) { return std::pow(u * (1.0 - u), 4); };
    const auto fourth = [](double u) {
        return 24.0 + u * (-480.0 + u * (2160.0 + u * (-3360.0 + u * 1680.0)));
    };
    const std::vector<double> energies = Energies(0, 400, 0.5);
    const std::vector<double> data =
        Over(energies, [&](double e) { return smooth(e / 400) + fourth(e / 400) / std::pow(kTwoPi, 4); });
    const std::vector<double> background = EnergyBackground(kSpline, energies, data);
    constexpr double kGrid = 2e-4;  // a point at each end counts for half a step only
    for (std::size_t i = 0; i < energies.size(); i += 50)
        EXPECT_NEAR(background[i], smooth(energies[i] / 400), kGrid) << energies[i];
}

TEST(EnergyComparison, FindsTheOffsetThatWasPutIn) {
    const std::vector<EnergyCurve> calculated = {Calculated(0, 0), Calculated(30, 45, -0.5)};
    const std::vector<MeasuredEnergyCurve> measured = {Measured(30, 45, 4.2, -0.5), Measured(0, 90, 4.2)};
    EnergyComparisonSettings settings{kCubic, 0.0, false};
    EXPECT_GT(CompareEnergies(calculated, measured, settings).agreement.R, 0.02);

    settings.findsOffset = true;
    const EnergyComparison found = CompareEnergies(calculated, measured, settings);
    EXPECT_NEAR(found.offset_eV, 4.2, 0.02);
    EXPECT_FALSE(found.isOffsetAtEnd);
    EXPECT_LT(found.agreement.R, 1e-4);  // what the spline between 4 eV leaves
    EXPECT_EQ(found.leftOut, 0U);
    ASSERT_EQ(found.curves.size(), 2U);
    EXPECT_EQ(found.curves[0].theta_deg, 30.0);

    settings = {kCubic, 4.2, false};
    EXPECT_LT(CompareEnergies(calculated, measured, settings).agreement.R, 1e-4);
    settings.offset_eV = 100.0;
    const EnergyComparison beyond = CompareEnergies(calculated, measured, settings);
    EXPECT_EQ(beyond.leftOut, 2U * 24U);  // 301, 304, ... 370
}

// A trend of the counts goes with the background, the size of chi stays.
TEST(EnergyComparison, BothLoseTheSameBackground) {
    const std::vector<EnergyCurve> calculated = {Calculated(0, 0)};
    MeasuredEnergyCurve measured = Measured(0, 0, 0.0, 0.5);
    const Agreement plain = CompareEnergies(calculated, {measured}, {kCubic}).agreement;
    EXPECT_NEAR(plain.scale, 0.5, 0.005);
    EXPECT_LT(plain.scaledR, 1e-3);
    for (std::size_t i = 0; i < measured.value.size(); ++i) measured.value[i] *= 7.0;
    EXPECT_NEAR(CompareEnergies(calculated, {measured}, {kCubic}).agreement.R, plain.R, kRounding);
}

TEST(EnergyComparison, RefusesWhatDoesNotMeet) {
    const std::vector<EnergyCurve> calculated = {Calculated(0, 0)};
    EXPECT_EQ(
        ErrorText([&] {
            CompareEnergies(calculated, {Measured(0, 0, 0.0)}, {kCubic, 500.0, false});
        }),
        "the measured energies, 130 to 370 eV with an offset of 500 eV, have 0 points between those of the "
        "calculation, 100 to 400 eV outside the surface; a polynomial of degree 3 as the background needs 5: "
        "widen [energies], or give the offset between both as energy-offset");
    EnergyCurve dark = Calculated(0, 0);
    for (double& intensity : dark.intensity) intensity -= 10.0;
    EXPECT_EQ(ErrorText([&] { CompareEnergies({dark}, {Measured(0, 0, 0.0)}, {kCubic}); }),
              "The background of the calculation is not positive at 130 eV: choose another background in "
              "[energies]");
}

TEST(MeasuredEnergies, ComeByDirectionInTheirOrder) {
    const TempFolder folder;
    const std::string alone = folder.Write("alone.csv", "energy,counts\n120,7\n100,2\n120,9\n110,4\n105,\n");
    const std::vector<MeasuredEnergyCurve> curves = LoadMeasuredEnergies(alone, {kAside});
    ASSERT_EQ(curves.size(), 1U);
    EXPECT_EQ(curves[0].theta_deg, 30.0);
    EXPECT_EQ(curves[0].phi_deg, 45.0);
    EXPECT_EQ(curves[0].kinetic_eV, (std::vector<double>{100, 110, 120}));
    EXPECT_EQ(curves[0].value, (std::vector<double>{2, 4, 8}));

    const std::string both = folder.Write(
        "both.csv", "theta,phi,energy,chi\n30,405,100,0.1\n0,12,100,0.2\n30,45,110,-0.1\n0,0,110,-0.2\n");
    const std::vector<MeasuredEnergyCurve> two = LoadMeasuredEnergies(both, {kNormal, kAside});
    ASSERT_EQ(two.size(), 2U);
    EXPECT_EQ(two[0].value, (std::vector<double>{1.1, 0.9}));
    EXPECT_EQ(two[1].value, (std::vector<double>{1.2, 0.8}));

    EXPECT_EQ(ErrorText([&] {
                  LoadMeasuredEnergies(alone, {kNormal, kAside});
              }),
              alone +
                  ": the table does not tell the directions, and [energies] has 2 of them: give it columns "
                  "theta and phi");
    EXPECT_EQ(ErrorText([&] { LoadMeasuredEnergies(both, {kNormal}); }),
              both +
                  ": measured at theta 30, phi 405, a direction that is not calculated: add it to theta and "
                  "phi of [energies]");
    const std::string angles = folder.Write("angles.csv", "theta,phi,I\n0,0,1\n1,0,2\n");
    EXPECT_EQ(
        ErrorText([&] { LoadMeasuredEnergies(angles, {kNormal}); }),
        angles + ": the table has no column of kinetic energies, which [energies] needs: name it energy");
}
