#include "prepare/emission/DipoleEmission.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "foundation/Vec3.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

using Direction = Vec3;

Direction Unit(const Direction& d) {
    const double length = std::hypot(d[0], d[1], d[2]);
    if (!(length > 0.0) || !std::isfinite(length))
        throw ZfError("The light needs a direction other than 0,0,0");
    return {d[0] / length, d[1] / length, d[2] / length};
}

/// Two directions that make a right-handed frame with the unit vector n: x and y for n along z.
std::array<Direction, 2> Transverse(const Direction& n) {
    const Direction aside = std::abs(n[0]) > 0.9 ? Direction{0.0, 1.0, 0.0} : Direction{1.0, 0.0, 0.0};
    const Direction second = Unit(Cross(n, aside));
    return {Cross(second, n), second};
}

LightVector Combine(const Direction& a, std::complex<double> ca, const Direction& b,
                    std::complex<double> cb) {
    return {ca * a[0] + cb * b[0], ca * a[1] + cb * b[1], ca * a[2] + cb * b[2]};
}

/// <Y_lm| cos(theta) |Y_l0,m> for l = l0 +- 1.
double CosineFactor(int l0, int m, int l) {
    const double upper = l > l0 ? l : l0;
    return std::sqrt((upper * upper - m * m) / (4.0 * upper * upper - 1.0));
}

/// <Y_l,m+s| sin(theta) exp(i s phi) |Y_l0,m> for l = l0 +- 1 and s = +-1.
double SineFactor(int l0, int m, int s, int l) {
    const int sm = s * m;
    if (l > l0)
        return -s * std::sqrt((l0 + sm + 1.0) * (l0 + sm + 2.0) / ((2.0 * l0 + 1.0) * (2.0 * l0 + 3.0)));
    return s * std::sqrt((l0 - sm) * (l0 - sm - 1.0) / ((2.0 * l0 - 1.0) * (2.0 * l0 + 1.0)));
}

/// <Y_l,m+s| eps.r |Y_l0,m>
std::complex<double> AngularFactor(const LightVector& light, int l0, int m, int s, int l) {
    if (s == 0) return light[2] * CosineFactor(l0, m, l);
    // eps.r = eps_z cos(theta) + sum over s of (eps_x - i s eps_y)/2 sin(theta) exp(i s phi)
    const std::complex<double> i(0.0, 1.0);
    return 0.5 * (light[0] - i * static_cast<double>(s) * light[1]) * SineFactor(l0, m, s, l);
}

}  // namespace

std::vector<LightVector> LinearLight(const Direction& along) {
    const Direction e = Unit(along);
    return {{e[0], e[1], e[2]}};
}

std::vector<LightVector> UnpolarisedLight(const Direction& travel) {
    const auto [e1, e2] = Transverse(Unit(travel));
    const double half = std::sqrt(0.5);
    return {Combine(e1, half, e2, 0.0), Combine(e1, 0.0, e2, half)};
}

std::vector<LightVector> CircularLight(const Direction& travel, Handedness handedness) {
    const auto [e1, e2] = Transverse(Unit(travel));
    const double half = std::sqrt(0.5);
    return {Combine(e1, half, e2, {0.0, handedness == Handedness::kLeft ? half : -half})};
}

double DipoleChannels::Beta() const {
    const double l = l0;
    const auto [lower, upper] = rho;
    const double mixed = 6.0 * l * (l + 1.0) * lower * upper * std::cos(delta[1] - delta[0]);
    return (l * (l - 1.0) * lower * lower + (l + 1.0) * (l + 2.0) * upper * upper - mixed) /
           ((2.0 * l + 1.0) * (l * lower * lower + (l + 1.0) * upper * upper));
}

ZfLmComplexTable DipoleWave(const DipoleChannels& channels, const LightVector& light, int m0) {
    const int l0 = channels.l0;
    ZfLmComplexTable wave(l0 + 2);
    for (std::size_t channel = l0 == 0 ? 1 : 0; channel < 2; ++channel) {
        const int l = channel == 0 ? l0 - 1 : l0 + 1;
        const std::complex<double> radial = std::polar(1.0, channels.delta[channel]) * channels.rho[channel];
        for (int s = -1; s <= 1; ++s)
            if (std::abs(m0 + s) <= l) wave.At(l, m0 + s) = radial * AngularFactor(light, l0, m0, s, l);
    }
    return wave;
}

}  // namespace qvre
