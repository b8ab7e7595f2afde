#include "solver/ZfLnAtomicPotentialC.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "ErrorText.h"

namespace {

constexpr double kBohr = 5.29177210903e-11;        // m (CODATA 2018)
constexpr double kRydberg_eV = 13.605693122994;    // (CODATA 2018)
constexpr double kCoulomb_eVm = 1.43996454784e-9;  // e^2/(4 pi eps0), eV m
constexpr int kDegrees = 4;                        // l = 0 to 3

AtomicPotentialRecord Record(double rBegin, double rEnd, const std::function<double(double)>& V_eV) {
    constexpr int kPoints = 4000;
    AtomicPotentialRecord record;
    for (int i = 0; i < kPoints; ++i) {
        record.radial.LnX.push_back(std::log(rBegin) + std::log(rEnd / rBegin) * i / (kPoints - 1));
        record.V.push_back(V_eV(std::exp(record.radial.LnX.back())));
    }
    return record;
}

using Values = std::vector<double>;

Values Sum(const Values& y, double factor, const Values& dy) {
    Values sum = y;
    for (std::size_t i = 0; i < y.size(); ++i) sum[i] += factor * dy[i];
    return sum;
}

/// Runge-Kutta of the fourth order over the grid, from the equation's own initial values; `check` sees y at
/// every grid point but the last, where the potential ends.
void Integrate(ZfLnAtomicPotentialC& equation, const std::function<void(double r, const Values& y)>& check) {
    double x = 0.0, p0 = 0.0, l0 = 0.0, h = 0.0;
    equation.InitialValues(x, p0, l0, h);
    Values y(2 * kDegrees, l0);
    for (std::size_t i = 0; i < y.size(); i += 2) y[i] = p0;
    const std::size_t steps = equation.record->radial.LnX.size() - 2;
    for (std::size_t i = 0; i < steps; ++i, x += h) {
        check(std::exp(x), y);
        Values k1, k2, k3, k4;
        equation.Derivative(x, y, k1);
        equation.Derivative(x + h / 2, Sum(y, h / 2, k1), k2);
        equation.Derivative(x + h / 2, Sum(y, h / 2, k2), k3);
        equation.Derivative(x + h, Sum(y, h, k3), k4);
        y = Sum(Sum(Sum(Sum(y, h / 6, k1), h / 3, k2), h / 3, k3), h / 6, k4);
    }
}

}  // namespace

// The state of l = n - 1 is R = r^l exp(-Z r/(n a0)) at E = -Z^2 Ry/n^2, and 2s has (1 - Z r/(2 a0)) before
// the exponential (Bethe and Salpeter, section 3). The tolerance is the constants' own: they differ in the
// seventh digit between adjustments, and a wrong energy grows along r.
TEST(ZfLnAtomicPotentialC, BoundStatesOfHydrogenLikeAtoms) {
    for (const double Z : {1.0, 3.0}) {
        AtomicPotentialRecord record =
            Record(1e-8 * kBohr / Z, 8.0 * kBohr / Z, [Z](double r) { return -Z * kCoulomb_eVm / r; });
        ZfLnAtomicPotentialC equation;
        equation.record = &record;
        for (int n = 1; n <= kDegrees; ++n) {
            record.E = -Z * Z * kRydberg_eV / (n * n);
            Integrate(equation, [Z, n](double r, const Values& y) {
                if (r * Z > 4.0 * kBohr) return;
                const double exponential = std::exp(-Z * r / (n * kBohr));
                ASSERT_NEAR(y[2 * static_cast<std::size_t>(n - 1)], exponential, 2e-5) << n << " " << r;
                if (n != 2) return;
                ASSERT_NEAR(y[0], (1.0 - Z * r / (2 * kBohr)) * exponential, 2e-5) << "2s, " << r;
            });
        }
    }
}

// The clamped spline of a cubic is that cubic, on any grid.
TEST(ZfLnAtomicPotentialC, SplineOfACubic) {
    const auto cubic = [](double x) { return 2.0 * x * x * x - x + 0.5; };
    AtomicPotentialRecord record;
    record.radial.LnX = {-1.0, -0.7, 0.1, 0.2, 1.0, 1.5};
    for (const double x : record.radial.LnX) record.V.push_back(cubic(x) / std::exp(x));
    record.rVFirstSlope = 5.0;
    record.rVLastSlope = 12.5;
    ZfLnAtomicPotentialC equation;
    equation.record = &record;
    double x0 = 0.0, p0 = 0.0, l0 = 1.0, step = 0.0;
    equation.InitialValues(x0, p0, l0, step);
    EXPECT_EQ(p0, 1.0);
    EXPECT_EQ(l0, 0.0);
    EXPECT_DOUBLE_EQ(step, 0.3);
    for (double x = -1.0; x < 1.5; x += 0.07) EXPECT_NEAR(equation.V(x), cubic(x) / std::exp(x), 1e-13) << x;
    EXPECT_EQ(equation.V(-1.1), record.V.front());
    EXPECT_EQ(equation.V(1.5), 0.0);
    record.rVFirstSlope = 1e30;  // a natural end
    equation.InitialValues(x0, p0, l0, step);
    EXPECT_EQ(record.rVSecond.front(), 0.0);
}

TEST(ZfLnAtomicPotentialC, Failures) {
    double d = 0.0;
    Values result;
    ZfLnAtomicPotentialC equation;
    EXPECT_EQ(ErrorText([&] { equation.InitialValues(d, d, d, d); }), "Error");
    AtomicPotentialRecord record;
    equation.record = &record;
    for (const Values& grid : {Values{}, {1.0}, {1.0, 1.0}, {1.0, 2.0, 3.0}}) {
        record.radial.LnX = grid;
        record.V.assign(std::min<std::size_t>(grid.size(), 2), 1.0);
        EXPECT_THROW(equation.InitialValues(d, d, d, d), ZfError) << grid.size();
        EXPECT_THROW(equation.Derivative(0.0, {1.0, 0.0}, result), ZfError) << grid.size();
    }
}
