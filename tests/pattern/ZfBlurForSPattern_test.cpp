#include "pattern/ZfBlurForSPattern.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "pattern/FuncGauss.h"
#include "scattering/SphericalHarmonics.h"

namespace {

using Blur = void (ZfBlurForSPattern::*)(ZfFloatMatrix&, const ZfFloatMatrix&, double);

/// Line l holds P_l(z) on the grid of the class.
ZfFloatMatrix LegendreLines(int lines, int rows) {
    ZfFloatMatrix table(lines, rows);
    for (int y = 0; y < rows; ++y)
        for (unsigned l = 0; l < static_cast<unsigned>(lines); ++l)
            table.At(static_cast<int>(l), y) =
                static_cast<float>(std::legendre(l, std::min(1.0, 2.0 * y / (rows - 1) - 1.0)));
    return table;
}

/// What a blur by the weight w(gamma) makes of P_l, as a factor (Funk-Hecke), by the midpoint rule.
double Eigenvalue(unsigned l, double end, const std::function<double(double)>& w) {
    constexpr int kSteps = 2000;
    double sum = 0.0;
    double norm = 0.0;
    for (int i = 0; i < kSteps; ++i) {
        const double gamma = (i + 0.5) * end / kSteps;
        sum += w(gamma) * std::legendre(l, std::cos(gamma));
        norm += w(gamma);
    }
    return sum / norm;
}

/// Thousands of terms are added up in 32-bit floats.
constexpr double kFloatSum = 1e-4;

void ExpectMultiples(Blur blur, const std::function<double(unsigned)>& factor, double tolerance) {
    constexpr int kLines = 6;
    constexpr int kRows = 201;
    constexpr double kDegrees = 8.0;
    const ZfFloatMatrix in = LegendreLines(kLines, kRows);
    ZfFloatMatrix out;
    ZfBlurForSPattern object;
    (object.*blur)(out, in, kDegrees);
    EXPECT_EQ(object.Result(), kRows);
    EXPECT_EQ(object.State(), kRows);
    for (int y = 0; y < kRows; ++y) {
        EXPECT_NEAR(out.ValueAt(0, y), 1.0, kFloatSum) << "constant, row " << y;
        for (int l = 1; l < kLines; ++l)
            ASSERT_NEAR(out.ValueAt(l, y), factor(static_cast<unsigned>(l)) * in.ValueAt(l, y), tolerance)
                << "l " << l << " row " << y;
    }
}

constexpr double kSigma = 8.0 * kDegree;

double Gaussian(double gamma) {
    return std::exp(-std::pow(std::sin(gamma), 2) / (2 * kSigma * kSigma));
}

/// What Ver5 makes of P_l: the weight is that of the area on the tangent plane.
double PlaneFactor(unsigned l) {
    return Eigenvalue(l, std::asin(3 * kSigma),
                      [](double gamma) { return Gaussian(gamma) * std::sin(gamma) * std::cos(gamma); });
}

// Without a blur the factors are 1; with this one they go down to 0.76 for l = 5. The tolerances are the
// grid's: a row is 0.01 in z, and P_5 has the slope 15 at the poles.
TEST(ZfBlurForSPattern, LegendrePolynomialsKeepTheirShape) {
    ExpectMultiples(&ZfBlurForSPattern::Ver5, PlaneFactor, 0.015);
    ExpectMultiples(
        &ZfBlurForSPattern::Ver6,
        [](unsigned l) {
            return Eigenvalue(l, 4 * kSigma, [](double gamma) { return Gaussian(gamma) * std::sin(gamma); });
        },
        0.015);
}

// A Gaussian line blurred by a Gaussian is one of the summed variance; the second row shows that rows do not
// mix.
TEST(ZfBlurForSPattern, LineOfAGaussian) {
    constexpr int kPoints = 200;
    constexpr double kStep = 0.1;
    const FuncGauss narrow(0.6);
    const FuncGauss wide(1.0);
    ZfFloatMatrix in(kPoints, 2);
    for (int i = 0; i < kPoints; ++i) {
        in.At(i, 0) = static_cast<float>(narrow((i - 100) * kStep));
        in.At(i, 1) = 3.0F;
    }
    ZfFloatMatrix out;
    ZfBlurForSPattern blur;
    blur.BlurAlongLine(out, in, kStep, 0.8);
    EXPECT_EQ(blur.Result(), kPoints);
    for (int i = 0; i < kPoints; ++i) {
        EXPECT_NEAR(out.ValueAt(i, 0), wide((i - 100) * kStep), 1e-6) << i;
        EXPECT_FLOAT_EQ(out.ValueAt(i, 1), 3.0F) << i;
    }

    blur.stop = 1;
    blur.BlurAlongLine(out, in, kStep, 0.8);
    EXPECT_EQ(out.ValueAt(100, 0), 0.0F);
    for (const auto& [step, sigma] : {std::pair{kStep, 0.0}, {kStep, -1.0}, {0.0, 1.0}}) {
        blur.BlurAlongLine(out, in, step, sigma);
        EXPECT_EQ(out.ValueAt(100, 0), in.ValueAt(100, 0));
    }
}

// A Gaussian along the line times a Legendre polynomial of the angle stays such a product.
TEST(ZfBlurForSPattern, RunBlursAnglesAndLines) {
    const ZfFloatMatrix legendre = LegendreLines(3, 201);
    ZfBlurForSPattern blur;
    blur.sigmaDeg = 8.0;
    blur.lineStep = 0.1;
    blur.lineSigma = 0.8;
    blur.input = ZfFloatMatrix(60, 201);
    for (int i = 0; i < 60; ++i)
        for (int y = 0; y < 201; ++y)
            blur.input.At(i, y) = static_cast<float>(FuncGauss(0.6)((i - 30) * 0.1)) * legendre.ValueAt(2, y);
    blur.Run();
    for (int y = 0; y < 201; ++y)
        EXPECT_NEAR(blur.output.ValueAt(25, y), PlaneFactor(2) * FuncGauss(1.0)(0.5) * legendre.ValueAt(2, y),
                    0.01);
}

TEST(ZfBlurForSPattern, SmallTablesAndWidths) {
    ZfFloatMatrix out;
    ZfBlurForSPattern blur;
    for (const Blur version : {&ZfBlurForSPattern::Ver5, &ZfBlurForSPattern::Ver6}) {
        const ZfFloatMatrix poles = LegendreLines(2, 2);
        for (const double degrees : {0.0, 1e-200, 1e-7, 5.0, -5.0}) {
            (blur.*version)(out, poles, degrees);
            for (std::int64_t i = 0; i < 4; ++i) EXPECT_NEAR(out.Data()[i], poles.Data()[i], 1e-6) << degrees;
        }
        (blur.*version)(out, ZfFloatMatrix(3, 0), 5.0);
        EXPECT_EQ(out.Count(), 0);
    }
    const ZfFloatMatrix single = LegendreLines(2, 1);
    EXPECT_EQ(ErrorText([&] { blur.Ver5(out, single, 5.0); }),
              "ZfBlurForSPattern::Ver5() ERROR z0<-1 || z0>1");
    EXPECT_EQ(ErrorText([&] { blur.Ver6(out, single, 5.0); }),
              "ZfBlurForSPattern::Ver6() ERROR z0<-1 || z0>1");
    // 3 sigma reach beyond the hemisphere that the tangent plane shows.
    EXPECT_EQ(ErrorText([&] { blur.Ver5(out, LegendreLines(2, 11), 20.0); }),
              "z0<-1 || z0>1 ERR iz<0 || iz>=nr");
    EXPECT_EQ(ErrorText([] { FuncGauss(0.0); }), "FuncGauss: Sigma should be positive");
}

}  // namespace
