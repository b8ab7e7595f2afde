#include <fmt/format.h>
#include <gtest/gtest.h>
#include <omp.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Constants.h"
#include "report/SphereFunctions.h"
#include "report/compare/PatternComparison.h"

// Measurements that are simulated from a formula, in the axes of the goniometer, against images of the same
// formula in the axes of the crystal. What an instrument does to them is done here in closed form.

namespace {

using Vector = std::array<double, 3>;

constexpr double kPixel = 1.5;  // degrees
// Pixels are interpolated: a few 1e-4 of chi, whose square is far below.
constexpr double kSmallR = 1e-4;
constexpr double kAngle = 0.05;  // degrees

double Dot(const Vector& a, const Vector& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Vector Along(double theta, double phi) {
    return {std::sin(theta * kDegree) * std::cos(phi * kDegree),
            std::sin(theta * kDegree) * std::sin(phi * kDegree), std::cos(theta * kDegree)};
}

/// Forward-focusing peaks along rows of atoms, without any symmetry, over the emission of a free atom.
double Free(const Vector& d) {
    return 1.0 + 0.6 * d[2];
}
double Crystal(const Vector& d) {
    static const std::array<std::array<double, 3>, 8> kRows = {{{20, 10, 0.5},
                                                                {35, 130, 0.7},
                                                                {38, 250, 0.4},
                                                                {50, 40, 0.6},
                                                                {55, 180, 0.5},
                                                                {62, 300, 0.8},
                                                                {66, 100, 0.4},
                                                                {45, 345, 0.3}}};
    double chi = 0.0;
    for (const auto& [theta, phi, height] : kRows)
        chi += height * std::exp(-(1.0 - Dot(d, Along(theta, phi))) * 40.0);
    return Free(d) * (1.0 + chi - 0.1);
}

SphereImage Image(SphereMap map, const std::function<double(const Vector&)>& f) {
    return Sampled(map, kPixel, [&f](double x, double y, double z) { return f({x, y, z}); });
}

/// Polar angles and azimuths of a measurement.
struct Scan {
    double thetaFrom, thetaTo, thetaStep, phiFrom, phiTo, phiStep;
};

/// In the direction that the goniometer calls (theta, phi), times the transmission of an analyser.
using Measured = std::function<double(double theta, double phi)>;

std::string Table(const Scan& scan, const Measured& measured) {
    std::string table = "theta,phi,counts\n";
    for (double theta = scan.thetaFrom; theta <= scan.thetaTo; theta += scan.thetaStep)
        for (double phi = scan.phiFrom; phi <= scan.phiTo; phi += scan.phiStep)
            table += fmt::format("{},{},{:.9g}\n", theta, phi, measured(theta, phi));
    return table;
}

/// The crystal turned by `turn` about its normal, whose polar angles are read too small by `offset`.
Measured Turned(double turn, double offset = 0.0) {
    return [=](double theta, double phi) { return 1000.0 * Crystal(Along(theta + offset, phi - turn)); };
}

class MeasuredComparison : public testing::Test {
protected:
    CompareRequest Request(const std::string& table, const std::string& background,
                           const std::function<double(const Vector&)>& calculated = Crystal) {
        CompareRequest request;
        request.measured = folder_.Write("data.csv", table);
        request.second.image = WriteImageFile(folder_.Path("b.xml_img"), Image(kMaps[0], calculated));
        request.background = ParseBackgroundModel(background);
        request.searched.rotation = true;
        return request;
    }

    TempFolder folder_;
};

constexpr Scan kWhole = {12, 72, 3, 0, 355, 5};

// Both sides lose the background of the same directions, whatever these are: sectors that no symmetry
// repeats, rings with gaps, single scans. The turn is found in all of them.
TEST_F(MeasuredComparison, SectorsAndScansLoseTheSame) {
    const std::tuple<const char*, Scan, const char*, double> cases[] = {
        {"all", kWhole, "mean", 33.0},
        {"100 degrees", {12, 72, 3, 20, 120, 4}, "mean", -70.0},
        {"60 degrees", {12, 72, 3, -30, 30, 3}, "mean", 141.4},
        {"60 degrees, polynomial", {12, 72, 3, -30, 30, 3}, "4", 141.4},
        {"polar scan", {6, 80, 1, 110, 110, 1}, "3", -70.0},
        {"azimuthal scan", {54, 54, 1, 0, 357, 3}, "mean", -70.0},
        {"azimuthal scan over a sector", {54, 54, 1, 0, 120, 2}, "mean", 25.25},
        {"two polar scans", {6, 80, 2, 10, 110, 100}, "2", 161.0}};
    for (const auto& [name, scan, background, turn] : cases) {
        const CompareResult result = ComparePatterns(Request(Table(scan, Turned(turn)), background));
        EXPECT_NEAR(result.setting.rotation, turn, kAngle) << name;
        EXPECT_LT(result.agreement.R, kSmallR) << name;
        EXPECT_LT(result.multipoleR, kSmallR) << name;
    }
}

TEST_F(MeasuredComparison, RotationIsGivenOrFound) {
    CompareRequest request = Request(Table(kWhole, Turned(33.0)), "mean");
    request.searched.rotation = false;
    EXPECT_GT(ComparePatterns(request).agreement.R, 0.3);
    request.setting.rotation = 33.0;
    EXPECT_LT(ComparePatterns(request).agreement.R, kSmallR);
}

// A polar angle that is read from the wrong zero, along whole rings and along a scan through the normal,
// where angles below it belong to the opposite azimuth.
TEST_F(MeasuredComparison, FindsThePolarOffset) {
    for (const Scan& scan : {kWhole, Scan{12, 72, 3, 20, 120, 4}}) {
        CompareRequest request = Request(Table(scan, Turned(-70.0, 2.3)), "mean");
        request.searched.thetaOffset = true;
        const CompareResult found = ComparePatterns(request);
        EXPECT_NEAR(found.setting.thetaOffset, 2.3, kAngle);
        EXPECT_NEAR(found.setting.rotation, -70.0, kAngle);
        EXPECT_LT(found.agreement.R, kSmallR);
        EXPECT_EQ(SettingText(request, found.setting).substr(0, 15), "polar offset 2.");
    }
    CompareRequest request = Request(Table({0, 60, 1, 10, 190, 180}, Turned(-70.0, -3.0)), "3");
    request.setting = {-70.0, -3.0, 0.0, 0.0};
    request.searched.rotation = false;
    EXPECT_LT(ComparePatterns(request).agreement.R, kSmallR);
}

// The normal leans by 3 degrees towards the measured azimuth 50. The crystal is turned about its own normal
// first and leaned then, by the rotation about the axis perpendicular to both, written out after Rodrigues.
TEST_F(MeasuredComparison, FindsTheTilt) {
    constexpr double kTurn = 40.0;
    constexpr double kTilt = 3.0;
    constexpr double kTowards = 50.0;
    const Measured leaning = [](double theta, double phi) {
        const Vector v = Along(theta, phi);
        const Vector axis = {-std::sin(kTowards * kDegree), std::cos(kTowards * kDegree), 0.0};
        const double c = std::cos(-kTilt * kDegree);
        const double s = std::sin(-kTilt * kDegree);
        const Vector cross = {axis[1] * v[2], -axis[0] * v[2], axis[0] * v[1] - axis[1] * v[0]};
        Vector back{};
        for (std::size_t i = 0; i < 3; ++i)
            back[i] = v[i] * c + cross[i] * s + axis[i] * Dot(axis, v) * (1 - c);
        const double turn = kTurn * kDegree;
        return Crystal({back[0] * std::cos(turn) + back[1] * std::sin(turn),
                        -back[0] * std::sin(turn) + back[1] * std::cos(turn), back[2]});
    };
    CompareRequest request = Request(Table({12, 72, 3, 0, 355, 5}, leaning), "mean");
    request.searched.tilt = true;
    const CompareResult found = ComparePatterns(request);
    EXPECT_NEAR(found.setting.tilt, kTilt, kAngle);
    EXPECT_NEAR(found.setting.tiltAzimuth, kTowards, 1.0);
    EXPECT_NEAR(found.setting.rotation, kTurn, kAngle);
    EXPECT_LT(found.agreement.R, kSmallR);
    request.searched = {};
    request.setting = {kTurn, 0.0, kTilt, kTowards};
    EXPECT_LT(ComparePatterns(request).agreement.R, kSmallR);
}

TEST_F(MeasuredComparison, SameForAnyNumberOfThreads) {
    CompareRequest request = Request(Table({12, 72, 6, 0, 350, 10}, Turned(12.3, 1.1)), "mean");
    request.searched.thetaOffset = true;
    const int threads = omp_get_max_threads();
    std::array<CompareResult, 2> results;
    for (const int count : {1, 3}) {
        omp_set_num_threads(count);
        results[count == 1 ? 0 : 1] = ComparePatterns(request);
    }
    omp_set_num_threads(threads);
    EXPECT_EQ(results[0].setting.rotation, results[1].setting.rotation);
    EXPECT_EQ(results[0].setting.thetaOffset, results[1].setting.thetaOffset);
    EXPECT_EQ(results[0].chiB, results[1].chiB);
}

// Snell's law of the electron: 30 eV of 200 are lost at the surface.
TEST_F(MeasuredComparison, RefractsAtTheSurface) {
    const Measured outside = [](double theta, double phi) {
        const double inside = std::asin(std::sqrt(170.0 / 200.0) * std::sin(theta * kDegree));
        return std::cos(theta * kDegree) / std::cos(inside) * Crystal(Along(Degrees(inside), phi - 33.0));
    };
    CompareRequest request = Request(Table({12, 78, 3, 20, 120, 4}, outside), "mean");
    EXPECT_GT(ComparePatterns(request).agreement.R, 0.02);
    request.instrument.innerPotential = 30.0;
    EXPECT_EQ(
        ErrorText([&] { ComparePatterns(request); }),
        "the image does not tell its energy: beside the inner potential give the energy of the calculation");
    request.instrument.energy = 200.0;
    EXPECT_LT(ComparePatterns(request).agreement.R, kSmallR);
}

/// P_8^3 by its closed form, up to a factor, times cos(3 phi): a harmonic of degree 8.
double Harmonic(const Vector& d) {
    const double z = d[2];
    const double s = std::sqrt(1.0 - z * z);
    const double phi = std::atan2(d[1], d[0]);
    // d^3 P_8 / dz^3 is proportional to 39 z^5 - 26 z^3 + 3 z.
    return s * s * s * (39 * z * z * z * z * z - 26 * z * z * z + 3 * z) * std::cos(3.0 * phi);
}

// A cone multiplies a harmonic of degree l by (P_{l-1}(c) - P_{l+1}(c))/((2l + 1)(1 - c)); an average over a
// 2-fold axis leaves nothing of a 3-fold one.
TEST_F(MeasuredComparison, AcceptanceAndDomains) {
    constexpr double kHalfAngle = 8.0;
    const double c = std::cos(kHalfAngle * kDegree);
    const double factor = (std::legendre(7, c) - std::legendre(9, c)) / (17 * (1 - c));
    const auto sharp = [](const Vector& d) { return 5.0 + Harmonic(d); };
    const Measured blurred = [&](double theta, double phi) {
        return 5.0 + factor * Harmonic(Along(theta, phi));
    };
    CompareRequest request = Request(Table({12, 72, 3, 0, 119, 4}, blurred), "mean", sharp);
    request.searched = {};
    EXPECT_NEAR(ComparePatterns(request).agreement.scale, factor, 1e-3);
    request.instrument.acceptance = kHalfAngle;
    const CompareResult result = ComparePatterns(request);
    EXPECT_NEAR(result.agreement.scale, 1.0, 1e-3);
    EXPECT_LT(result.agreement.R, kSmallR);
    const auto onlyTwofold = [](const Vector& d) { return Harmonic(d) + 5.0 + d[0] * d[1]; };
    request = Request(Table(kWhole,
                            [](double theta, double phi) {
                                const Vector d = Along(theta, phi);
                                return 5.0 + d[0] * d[1];
                            }),
                      "mean", onlyTwofold);
    request.instrument.fold = 2;
    EXPECT_LT(ComparePatterns(request).agreement.R, kSmallR);
}

// I0 of an s level under light along x vanishes across it. Directions there take no part, and are counted;
// the modulation of all others is exact.
TEST_F(MeasuredComparison, LeavesOutWhereI0IsFaint) {
    const auto direct = [](const Vector& d) { return d[0] * d[0]; };
    const auto chi = [](const Vector& d) { return Crystal(d) / Free(d) - 1.0; };
    std::string table = "theta,phi,chi\n";
    for (int theta = 20; theta <= 70; theta += 5)
        for (int phi = 0; phi < 360; phi += 10)
            table += fmt::format("{},{},{:.9g}\n", theta, phi, chi(Along(theta, phi)));
    CompareRequest request = Request(table, "mean", [&](const Vector& d) {
        // What the neighbours scatter does not vanish with I0.
        return direct(d) * (1.0 + chi(d)) + (d[0] * d[0] < 0.0004 ? 0.1 : 0.0);
    });
    request.background.reset();
    request.second.i0 = WriteImageFile(folder_.Path("i0.xml_img"), Image(kMaps[0], direct));
    request.searched = {};
    const CompareResult result = ComparePatterns(request);
    EXPECT_LT(result.agreement.R, 1e-3);
    EXPECT_EQ(result.belowHorizon, 0U);
    // |sin(theta) cos(phi)| < 0.1: the azimuths 90 and 270, and their neighbours up to sin(theta) =
    // 0.1/sin(10).
    EXPECT_EQ(result.leftOut, 11U * 2 + 4U * 4);
    EXPECT_EQ(result.Directions() + result.leftOut, 11U * 36);
    EXPECT_EQ(ComparisonRemarks(request, result),
              "left out: 38 of 396 directions, where I0 is below 1 percent of its maximum\n");
}

// Polar offsets push grazing directions below the surface.
TEST_F(MeasuredComparison, LeavesOutWhatIsBelowTheSurface) {
    CompareRequest request = Request(Table({30, 90, 3, 0, 355, 5}, Turned(10.0)), "mean");
    request.setting = {10.0, 4.0, 0.0, 0.0};
    request.searched = {};
    const CompareResult result = ComparePatterns(request);
    EXPECT_EQ(result.belowHorizon, 2U * 72);  // 87 and 90 degrees
    EXPECT_EQ(result.leftOut, 0U);
    request.thetaMin = 87.0;
    EXPECT_EQ(
        ErrorText([&] { ComparePatterns(request); }),
        "Fewer than 2 directions lie above the horizon where I0 is not faint: check the polar offset and the "
        "tilt, or take a background away instead of I0");
    // A search has to stay above the surface with all that it tries.
    request.thetaMin = 85.0;
    request.searched.thetaOffset = true;
    EXPECT_EQ(
        ErrorText([&] { ComparePatterns(request); }),
        "Fewer than 2 directions lie 6 degrees above the horizon, as far as the search may move them: widen "
        "the polar range, or give the polar offset and the tilt");
}

TEST_F(MeasuredComparison, AnImageIsOfOneEnergy) {
    const CompareRequest request =
        Request("theta,phi,energy,counts\n30,0,100,5\n30,0,120,6\n30,90,100,7\n", "mean");
    EXPECT_EQ(ErrorText([&] { ComparePatterns(request); }),
              request.measured +
                  " runs over energies, from 100 to 120 eV, and an image is of one: keep the points of "
                  "that energy");
}

// A table of chi alone is an intensity over some background: with a background both sides lose it.
TEST_F(MeasuredComparison, ChiAloneLosesTheBackgroundToo) {
    std::string table = "theta,phi,chi\n";
    for (int theta = 12; theta <= 72; theta += 3)
        for (int phi = 20; phi <= 120; phi += 4)
            table += fmt::format("{},{},{:.9g}\n", theta, phi, Crystal(Along(theta, phi - 33)) / 1.7 - 1.0);
    const CompareResult result = ComparePatterns(Request(table, "mean"));
    EXPECT_NEAR(result.setting.rotation, 33.0, kAngle);
    EXPECT_LT(result.agreement.R, kSmallR);
    EXPECT_EQ(result.modulationA, "means over the azimuth, of 1 + its column chi");
}

}  // namespace
