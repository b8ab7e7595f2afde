#include "scattering/ZfVectorFreeElectron.h"

#include <gtest/gtest.h>

#include "Sources.h"
#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"

namespace {

const double kY00 = 1.0 / std::sqrt(4.0 * kPi);

template <class Wave>
std::complex<double> ValueAt(const Wave& wave, double x, double y, double z) {
    std::complex<double> value;
    wave.ValueFromOrigin(value, x, y, z);
    return value;
}

void ExpectClose(std::complex<double> value, std::complex<double> truth) {
    EXPECT_LT(std::abs(value - truth), 1e-11 * std::abs(truth)) << value << " " << truth;
}

}  // namespace

TEST(ZfFreeElectron, SendsOutSphericalWaves) {
    ZfFreeElectron source = SWave(1e-10, 0, 0, {0.5, 1.0});
    // The usual rule of thumb, k [1/angstrom] = 0.5123 sqrt(E [eV]).
    EXPECT_NEAR(source.k * 1e-10 / std::sqrt(kEnergy_eV), 0.5123167, 1e-6);
    const double x = source.k * 2e-10;
    // h_0(x) = -i exp(ix)/x.
    const std::complex<double> h = std::complex<double>(0, -1) * std::polar(1.0, x) / x;
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), std::complex<double>(0.5, 1.0) * kY00 * h);
    // The incoming half of equal size makes the wave regular: 2 A j_0.
    const std::complex<double> regular = std::complex<double>(1.0, 2.0) * kY00 * (std::sin(x) / x);
    source.B = source.A;
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), regular);
    source.A.SetSize(3);  // tables of different size go another way through the sum
    source.A.At(0, 0) = {0.5, 1.0};
    ExpectClose(ValueAt(source, 1e-10, 0, 2e-10), regular);

    const ZfFreeElectron centre = SWave(0, 0, 0);
    EXPECT_EQ(ValueAt(centre, 0, 0, 0.0009 / centre.k), 0.0);
    EXPECT_NE(ValueAt(centre, 0, 0, 0.0011 / centre.k), 0.0);
}

TEST(ZfVectorFreeElectron, ShiftsTheOriginAndDropsWhatStandsThere) {
    ZfVectorFreeElectron list = ListOf(
        {SWave(0, 0, 0), SWave(1e-10, 2e-10, 3e-10), SWave(1e-10, 2e-10, 3e-10), SWave(0, 0, 4e-10, 2.0)});
    ZfVectorFreeElectron seen;
    list.ShiftOrigin(seen, 2);
    ASSERT_EQ(seen.electrons.size(), 2U);
    list.electrons.erase(list.electrons.begin() + 1, list.electrons.begin() + 3);
    ExpectClose(ValueAt(seen, 1e-10, -1e-10, -2e-10), ValueAt(list, 2e-10, 1e-10, 1e-10));
    EXPECT_THROW(list.ShiftOrigin(seen, -1), const char*);
    EXPECT_THROW(list.ShiftOrigin(seen, 2), const char*);
}

// Far away h_1 becomes (-i)^(l+1) exp(ikr)/(kr), and the path of a displaced source differs by k d.
TEST(ZfVectorFreeElectron, HasTheFarFieldOfItsWave) {
    const ZfVectorFreeElectron list = ListOf({FullSource(3, 0, 0, 0), FullSource(4, 1e-10, -2e-10, 0.5e-10)});
    const double theta = 1.1;
    const double phi = -0.4;
    const double x = list.electrons[0].k * 1e-5;
    std::complex<double> near;
    list.Value(near, 1e-5, theta, phi);
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
    // Forwards, along the row of emitter and atom, nothing is damped by vibrations.
    EXPECT_NEAR(std::abs(list.ScatteredAmplitude(std::acos(0.8), 0, 0)), kY00, 1e-12);
    list.SetMeanFreePath_m(7e-10);
    ExpectClose(list.ScatteredAmplitude(0, 0, 0), undamped * thermal * std::exp(-2.0 * rho / 7e-10));
    ExpectClose(list.DirectAmplitude(0, 0), {0, -kY00});
}
