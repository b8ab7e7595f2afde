#include <gtest/gtest.h>

#include <cmath>

#include "EveryTarget.h"
#include "Sources.h"
#include "scattering/FarField.h"
#include "scattering/ZfWaveFunction.h"

// The vector kernels against the literal evaluation point by point, which ZfFreeElectron and
// ZfVectorFreeElectron keep.

namespace {

/// Of the largest sample. The literal form takes the polar angle as an arc cosine, which near the axis of a
/// source costs it some digits that the kernels keep.
constexpr double kKernelTolerance = 1e-10;

/// Directions with both poles and the axes, padded as the kernels need it.
struct Directions {
    Directions() {
        for (const double t : {0.0, 1.0}) Add(t, 0.0);
        for (const double p : {0.0, 0.25, 0.5, 0.75}) Add(0.5, p);
        for (const double p : {0.1, 0.4, 0.6, 0.9, 0.15, 0.35, 0.85}) Add(0.3, p);  // mirror images of a ring
        for (double i = 1; i < 32; ++i) Add(i / 32, 0.5 + 0.5 * std::sin(i * i));
        count = theta.size();
        for (std::vector<double>* axis : {&x, &y, &z}) axis->resize(count + kKernelPadding, 0.0);
    }
    void Add(double t, double p) {
        const double pi = std::acos(-1.0);
        theta.push_back(pi * t);
        phi.push_back(2 * pi * p);
        x.push_back(std::sin(theta.back()) * std::cos(phi.back()));
        y.push_back(std::sin(theta.back()) * std::sin(phi.back()));
        z.push_back(std::cos(theta.back()));
    }
    KernelDirections Unit() const { return {x.data(), y.data(), z.data(), count}; }

    std::size_t count = 0;
    std::vector<double> theta, phi, x, y, z;
};

void ExpectSamplesOf(const ZfVectorFreeElectron& list, double radius, const char* what) {
    const Directions directions;
    const ZfWaveVectorFreeElectron wave(&list);
    std::vector<double> re(directions.count + kKernelPadding, 99.0);
    std::vector<double> im = re;
    wave.Sample(directions.Unit(), radius, re.data(), im.data());
    std::vector<std::complex<double>> plain(directions.count);
    double largest = 0.0;
    for (std::size_t i = 0; i < directions.count; ++i) {
        list.ValueFromOrigin(plain[i], radius * directions.x[i], radius * directions.y[i],
                             radius * directions.z[i]);
        largest = std::max(largest, std::abs(plain[i]));
    }
    for (std::size_t i = 0; i < directions.count; ++i)
        EXPECT_LE(std::abs(plain[i] - std::complex<double>(re[i], im[i])), kKernelTolerance * largest)
            << what;
}

class Kernels : public EveryTarget {};

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, Kernels, AllTargets(), TargetName);

}  // namespace

TEST_P(Kernels, AgreeWithTheLiteralWaveForEveryTableSize) {
    for (std::int32_t l = 1; l <= 25; ++l) {
        SCOPED_TRACE(l);
        ExpectSamplesOf(ListOf({FullSource(l, 1e-10, -3e-10, 2e-10)}), 0.7e-10, "off the axis");
        ExpectSamplesOf(ListOf({FullSource(l, 0.0, 0.0, 4e-10)}), 1e-10, "on the axis");
    }
}

TEST_P(Kernels, AgreeWhereTheVectorFormDoesNotServe) {
    ExpectSamplesOf(ListOf({FullSource(12, 0.0, 0.0, 1e-10)}), 1e-10,
                    "a sample at the source and samples near it");
    ExpectSamplesOf(ListOf({FullSource(20, 0.0, 1.05e-10, 0.0)}), 1e-10,
                    "samples inside the range of large y_l");
    ExpectSamplesOf(ListOf({FullSource(5, 2e-6, 0.0, 0.0)}), 1e-10, "a phase beyond the vector sine");
    ExpectSamplesOf(ListOf({FullSource(120, 0.0, 0.0, 9e-10)}), 1e-10, "a table beyond the kernels");
    ExpectSamplesOf(ListOf({FullSource(3, 0.0, 0.0, 2e-10), ZfFreeElectron()}), 1e-10, "an empty table");
    ExpectSamplesOf(ListOf({FullSource(3, 0.0, 0.0, 2e-10)}), 0.0, "radius 0");
    ZfVectorFreeElectron plane =
        ListOf({FullSource(1, 1e-10, 2e-10, 3e-10), FullSource(9, 0.0, 2e-10, 1e-10)});
    plane.electrons[0].SetPlaneWave(Vector3(0.3, -0.2, 0.9), {0.5, -1.5});
    ExpectSamplesOf(plane, 1e-10, "a plane wave and a source");
}

TEST_P(Kernels, AgreeWithTheLiteralFarField) {
    for (const std::int32_t l : {1, 2, 7, 15, 16, 25}) {
        std::vector<ZfFreeElectron> electrons = {FullSource(3, 0.0, 0.0, 0.0)};
        // Tables of several sizes, an entry without one, and a number of sources that fills no tile.
        for (int i = 0; i < 6; ++i)
            electrons.push_back(
                FullSource(std::max(l - i, 0), 5e-10 * std::sin(i), 4e-10 * std::cos(2 * i), -1e-10 * i));
        ZfVectorFreeElectron list = ListOf(std::move(electrons));
        for (std::size_t e = 0; e < list.electrons.size(); ++e)
            list.electrons[e].Uiso = 1e-23 * static_cast<double>(e);
        list.SetMeanFreePath_m(2e-9);
        ASSERT_TRUE(FarField::Serves(list));

        const Directions directions;
        std::vector<double> scratch;
        std::vector<FarField::Amplitudes> amplitudes;
        FarFieldDirections rings;
        for (std::size_t i = 0; i < directions.count; ++i)
            rings.Add(i, directions.x[i], directions.y[i], directions.z[i]);
        rings.Order();
        ASSERT_EQ(rings.tasks.size(), 1U);
        FarField({&list, 1}).Calculate(rings, rings.tasks[0], scratch, amplitudes);
        for (std::size_t n = 0; n < directions.count; ++n) {
            const std::size_t i = rings.directions[n].index;
            const std::complex<double> direct = list.DirectAmplitude(directions.theta[i], directions.phi[i]);
            const std::complex<double> scattered =
                list.ScatteredAmplitude(directions.theta[i], directions.phi[i], 0);
            EXPECT_LE(std::abs(amplitudes[0].direct[n] - direct), 1e-12) << "L " << l << ", direction " << i;
            EXPECT_LE(std::abs(amplitudes[0].scattered[n] - scattered), 1e-11)
                << "L " << l << ", direction " << i;
        }
    }
    EXPECT_FALSE(FarField::Serves(ListOf({FullSource(2, 0.0, 0.0, 0.0), FullSource(2, 2e-6, 0.0, 0.0)})));
}
