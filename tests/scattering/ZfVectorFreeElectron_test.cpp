#include "scattering/ZfVectorFreeElectron.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Sources.h"
#include "scattering/SphericalHarmonics.h"

namespace {

const double kY00 = 1.0 / std::sqrt(4.0 * kPi);

std::complex<double> ValueAt(const ZfFreeElectron& source, double x, double y, double z) {
    std::complex<double> value;
    source.ValueFromOrigin(value, x, y, z);
    return value;
}

void ExpectClose(std::complex<double> value, std::complex<double> truth) {
    EXPECT_LT(std::abs(value - truth), 1e-11 * std::abs(truth)) << value << " " << truth;
}

}  // namespace

TEST(ZfFreeElectron, HasTheWaveNumberOfItsEnergy) {
    // The usual rule of thumb, k [1/angstrom] = 0.5123 sqrt(E [eV]).
    EXPECT_NEAR(SWave(0, 0, 0).k * 1e-10 / std::sqrt(kEnergy_eV), 0.5123167, 1e-6);
}

TEST(ZfFreeElectron, SendsOutSphericalWaves) {
    ZfFreeElectron source = SWave(1e-10, 0, 0, {0.5, 1.0});
    const double x = source.k * 2e-10;
    // h_0(x) = -i exp(ix)/x.
    const std::complex<double> h = std::complex<double>(0, -1) * std::polar(1.0, x) / x;
    const std::complex<double> outgoing = std::complex<double>(0.5, 1.0) * kY00 * h;
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), outgoing);

    // The incoming half of equal size makes the wave regular: 2 A j_0.
    source.B = source.A;
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), std::complex<double>(1.0, 2.0) * kY00 * (std::sin(x) / x));
    // Tables of different size go another way through the sum.
    source.A.SetSize(3);
    source.A.At(0, 0) = {0.5, 1.0};
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), std::complex<double>(1.0, 2.0) * kY00 * (std::sin(x) / x));
}

TEST(ZfFreeElectron, DoesNotActAtItsOwnCentre) {
    const ZfFreeElectron source = SWave(0, 0, 0);
    EXPECT_EQ(ValueAt(source, 0, 0, 0), 0.0);
    EXPECT_EQ(ValueAt(source, 0, 0, 0.0009 / source.k), 0.0);
    EXPECT_NE(ValueAt(source, 0, 0, 0.0011 / source.k), 0.0);
    EXPECT_EQ(ValueAt(SourceOf(0, 0, 0, 0), 0, 0, 1e-10), 0.0);
    ZfFreeElectron unset = source;
    unset.Ek_eV = -1.0;
    EXPECT_THROW(ValueAt(unset, 0, 0, 1e-10), const char*);
}

TEST(ZfVectorFreeElectron, ShiftsTheOriginAndDropsWhatStandsThere) {
    ZfVectorFreeElectron list = ListOf(
        {SWave(0, 0, 0), SWave(1e-10, 2e-10, 3e-10), SWave(1e-10, 2e-10, 3e-10), SWave(0, 0, 4e-10, 2.0)});
    ZfVectorFreeElectron seen;
    list.ShiftOrigin(seen, 2);
    ASSERT_EQ(seen.electrons.size(), 2U);
    EXPECT_EQ(seen.electrons[0].position.VectorAt(1), -2e-10);
    EXPECT_EQ(seen.electrons[1].position.VectorAt(2), 4e-10 - 3e-10);
    EXPECT_EQ(seen.electrons[1].A.At(0, 0), 2.0);
    std::complex<double> before;
    std::complex<double> after;
    list.electrons.erase(list.electrons.begin() + 1, list.electrons.begin() + 3);
    list.ValueFromOrigin(before, 2e-10, 1e-10, 1e-10);
    seen.ValueFromOrigin(after, 1e-10, -1e-10, -2e-10);
    ExpectClose(after, before);
    EXPECT_THROW(list.ShiftOrigin(seen, -1), const char*);
    EXPECT_THROW(list.ShiftOrigin(seen, 2), const char*);
}

// Far away h_1 becomes (-i)^(l+1) exp(ikr)/(kr), and the path of a displaced source differs by k d.
TEST(ZfVectorFreeElectron, HasTheFarFieldOfItsWave) {
    ZfFreeElectron emitter = SourceOf(3, 0, 0, 0);
    for (std::size_t i = 0; i < 9; ++i) emitter.A.block[i] = {std::cos(double(i)), std::sin(2.0 * double(i))};
    ZfFreeElectron atom = SourceOf(4, 1e-10, -2e-10, 0.5e-10);
    for (std::size_t i = 0; i < 16; ++i) atom.A.block[i] = {std::sin(double(i)), 0.2};
    const ZfVectorFreeElectron list = ListOf({emitter, atom});
    const double theta = 1.1;
    const double phi = -0.4;
    const double r = 1e-5;
    const double x = emitter.k * r;
    std::complex<double> near;
    list.Value(near, r, theta, phi);
    EXPECT_LT(std::abs(near * x * std::polar(1.0, -x) - list.TotalAmplitude(theta, phi, 0)), 1e-4);
    EXPECT_NE(list.ScatteredAmplitude(theta, phi, 0), list.ScatteredAmplitude(theta, phi, 2));
}

TEST(ZfVectorFreeElectron, DampsTheScatteredWaveAlone) {
    ZfVectorFreeElectron list = ListOf({SWave(0, 0, 0), SWave(3e-10, 0, 4e-10)});
    list.electrons[0].Uiso = 0.3e-22;
    list.electrons[1].Uiso = 0.5e-22;
    const double k = list.electrons[0].k;
    const double rho = 5e-10;
    const double d = 4e-10;  // along the normal
    const std::complex<double> undamped = std::complex<double>(0, -kY00) * std::polar(1.0, -k * d);
    const double thermal = std::exp(-(1.0 - d / rho) * k * k * 0.8e-22);
    ExpectClose(list.ScatteredAmplitude(0, 0, 0), undamped * thermal);
    list.SetMeanFreePath_m(7e-10);
    ExpectClose(list.ScatteredAmplitude(0, 0, 0), undamped * thermal * std::exp(-2.0 * rho / 7e-10));
    ExpectClose(list.DirectAmplitude(0, 0), {0, -kY00});
    EXPECT_EQ(ErrorText([&] { list.SetMeanFreePath_m(-1e-10); }),
              "ZfVectorFreeElectron::SetMeanFreePath_m():ERROR length_meter <0");

    // Forwards, along the row of emitter and atom, nothing is damped by vibrations.
    list.SetMeanFreePath_m(0.0);
    EXPECT_NEAR(std::abs(list.ScatteredAmplitude(std::acos(0.8), 0, 0)), kY00, 1e-12);
}
