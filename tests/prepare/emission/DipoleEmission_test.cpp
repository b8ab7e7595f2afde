#include "prepare/emission/DipoleEmission.h"

#include <gtest/gtest.h>

#include <cmath>

#include "ErrorText.h"
#include "foundation/Constants.h"
#include "foundation/Vec3.h"
#include "scattering/ZfVectorFreeElectron.h"

namespace {

constexpr double kRounding = 1e-12;
using Direction = Vec3;

/// The emission of all sublevels into a direction, 1 on the average, by the far field of the calculation.
double Intensity(const DipoleChannels& channels, const std::vector<LightVector>& light, const Direction& n) {
    double sum = 0.0;
    double norm = 0.0;
    for (const LightVector& part : light)
        for (int m = -channels.l0; m <= channels.l0; ++m) {
            ZfVectorFreeElectron list;
            list.electrons.resize(1);
            list.electrons[0].A = DipoleWave(channels, part, m);
            list.SetEnergy_eV(500.0);
            sum += std::norm(list.DirectAmplitude(std::acos(n[2]), std::atan2(n[1], n[0])));
            for (const auto& a : list.electrons[0].A.block) norm += std::norm(a);
        }
    return 4.0 * kPi * sum / norm;
}

double P2(const Direction& a, const Direction& b) {
    const double x = Dot(a, b);
    return 1.5 * x * x - 0.5;
}

const Direction kAxis{2.0 / 7.0, -3.0 / 7.0, 6.0 / 7.0};
const Direction kSeen[] = {
    {0.6, 0.0, 0.8}, {0.0, -0.8, 0.6}, {-2.0 / 3.0, 1.0 / 3.0, 2.0 / 3.0}, {0.0, 0.0, -1.0}};

}  // namespace

// The sum over the sublevels is 1 + beta P2 of the angle to the polarisation, and 1 - beta/2 P2 of that to a
// ray that is not polarised, or circularly (C. N. Yang, Phys. Rev. 74, 764 (1948); Cooper and Zare for beta).
TEST(DipoleEmission, AngularDistributionOfAClosedShell) {
    for (int l0 = 0; l0 <= 3; ++l0) {
        const DipoleChannels channels{l0, {0.3, 0.7}, {5.8, 2.4}};
        const double beta = channels.Beta();
        for (const Direction& seen : kSeen) {
            const double linear = 1.0 + beta * P2(seen, kAxis);
            const double ray = 1.0 - 0.5 * beta * P2(seen, kAxis);
            EXPECT_NEAR(Intensity(channels, LinearLight(kAxis), seen), linear, kRounding) << l0;
            EXPECT_NEAR(Intensity(channels, UnpolarisedLight(kAxis), seen), ray, kRounding) << l0;
            EXPECT_NEAR(Intensity(channels, CircularLight(kAxis, Handedness::kLeft), seen), ray, kRounding)
                << l0;
            EXPECT_NEAR(Intensity(channels, CircularLight(kAxis, Handedness::kRight), seen), ray, kRounding)
                << l0;
        }
    }
}

// Left circular light brings one unit of angular momentum along its way, right circular light takes it.
TEST(DipoleEmission, HandednessOfCircularLight) {
    const DipoleChannels s{0, {0.0, 1.0}, {0.0, 0.0}};
    for (const Handedness handedness : {Handedness::kLeft, Handedness::kRight})
        for (const double z : {1.0, -1.0}) {
            const ZfLmComplexTable wave = DipoleWave(s, CircularLight({0.0, 0.0, z}, handedness)[0], 0);
            const int m = (handedness == Handedness::kLeft) == (z > 0.0) ? 1 : -1;
            EXPECT_NEAR(std::abs(wave.At(1, m)), std::sqrt(1.0 / 3.0), kRounding);
            EXPECT_NEAR(std::abs(wave.At(1, -m)), 0.0, kRounding);
        }
}

TEST(DipoleEmission, RefusesLightWithoutDirection) {
    const std::string text = "The light needs a direction other than 0,0,0";
    EXPECT_EQ(ErrorText([] { LinearLight({0.0, 0.0, 0.0}); }), text);
    EXPECT_EQ(ErrorText([] { UnpolarisedLight({0.0, std::nan(""), 1.0}); }), text);
    EXPECT_EQ(ErrorText([] { CircularLight({0.0, HUGE_VAL, 1.0}, Handedness::kLeft); }), text);
}
