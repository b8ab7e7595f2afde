#include "report/picture/ColourMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "foundation/Constants.h"

namespace qvre {

namespace {

constexpr std::array<int, 20> kViridis = {
    0x440154, 0x481567, 0x482677, 0x453781, 0x404788, 0x39568C, 0x33638D, 0x2D708E, 0x287D8E, 0x238A8D,
    0x1F968B, 0x20A387, 0x29AF7F, 0x3CBB75, 0x55C667, 0x73D055, 0x95D840, 0xB8DE29, 0xDCE319, 0xFDE725};

Colour FromHex(int code) {
    return {(code >> 16) / 255.0, ((code >> 8) & 0xFF) / 255.0, (code & 0xFF) / 255.0};
}

Colour ViridisAt(double fraction) {
    const double place = fraction * (kViridis.size() - 1);
    const auto i = std::min(static_cast<std::size_t>(place), kViridis.size() - 2);
    const double t = place - static_cast<double>(i);
    const Colour a = FromHex(kViridis[i]);
    const Colour b = FromHex(kViridis[i + 1]);
    return {a.red + t * (b.red - a.red), a.green + t * (b.green - a.green), a.blue + t * (b.blue - a.blue)};
}

double Gamma(double linear) {
    const double v = std::clamp(linear, 0.0, 1.0);
    return v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1 / 2.4) - 0.055;
}

/// The cube root of CIELAB with its straight piece near 0, inverted.
double LabInverse(double f) {
    return f > 6.0 / 29 ? f * f * f : 3 * (6.0 / 29) * (6.0 / 29) * (f - 4.0 / 29);
}

/// White point D65.
Colour FromLab(double l, double a, double b) {
    const double fy = (l + 16) / 116;
    const double x = 0.95047 * LabInverse(fy + a / 500);
    const double y = LabInverse(fy);
    const double z = 1.08883 * LabInverse(fy - b / 200);
    return {Gamma(3.2404542 * x - 1.5371385 * y - 0.4985314 * z),
            Gamma(-0.9692660 * x + 1.8760108 * y + 0.0415560 * z),
            Gamma(0.0556434 * x - 0.2040259 * y + 1.0572252 * z)};
}

/// M is the distance from black in CIELAB, s the angle from the grey axis, h the hue.
Colour DivergingAt(double fraction) {
    constexpr double kEndM = 80.0;
    constexpr double kEndS = 1.08;
    constexpr double kWhiteM = 88.0;
    const bool cool = fraction < 0.5;
    const double hue = cool ? -1.1 : 0.5;
    // The hue of white is chosen so that the way to it keeps to the same rate of change; it turns away from
    // purple.
    const double turn = kEndS * std::sqrt(kWhiteM * kWhiteM - kEndM * kEndM) / (kEndM * std::sin(kEndS));
    const double whiteHue = hue > -kPi / 3 ? hue + turn : hue - turn;
    const double t = std::abs(2 * fraction - 1);  // 0 at white, 1 at the end
    const double m = kWhiteM + t * (kEndM - kWhiteM);
    const double s = t * kEndS;
    const double h = whiteHue + t * (hue - whiteHue);
    return FromLab(m * std::cos(s), m * std::sin(s) * std::cos(h), m * std::sin(s) * std::sin(h));
}

}  // namespace

Colour ColourAt(ColourMap map, double fraction) {
    const double inside = std::clamp(fraction, 0.0, 1.0);
    if (map == ColourMap::kDiverging) return DivergingAt(inside);
    if (map == ColourMap::kGrey) return FromLab(100 * inside, 0.0, 0.0);
    return ViridisAt(inside);
}

}  // namespace qvre
