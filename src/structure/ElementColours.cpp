#include "structure/ElementColours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <gemmi/elem.hpp>
#include <string_view>

#include "foundation/Constants.h"

namespace qvre {

namespace {

struct NamedColour {
    std::string_view element;
    std::uint32_t rgb;
};

constexpr std::array kUsual = std::to_array<NamedColour>(
    {{"H", 0xf2f2f2},  {"Li", 0xb57edc}, {"Be", 0xc5e17a}, {"B", 0xf2b0a0},  {"C", 0x6b6b6b},
     {"N", 0x4062d0},  {"O", 0xd8382e},  {"F", 0x8fd18a},  {"Na", 0x9a63c7}, {"Mg", 0x7fb24a},
     {"Al", 0xb9bcc4}, {"Si", 0xd9b778}, {"P", 0xe8872e},  {"S", 0xe8c93a},  {"Cl", 0x4fb548},
     {"K", 0x8546b5},  {"Ca", 0x6fbf5f}, {"Ti", 0xa9b0bd}, {"V", 0x93a7c4},  {"Cr", 0x7f98d0},
     {"Mn", 0xa27cc0}, {"Fe", 0xc96f3c}, {"Co", 0xd68c9f}, {"Ni", 0x7fae86}, {"Cu", 0xc8804a},
     {"Zn", 0x8288b0}, {"Ga", 0xc09a9a}, {"Ge", 0x7a9a96}, {"As", 0xb78fd6}, {"Se", 0xe0a030},
     {"Br", 0x993a2c}, {"Sr", 0x58c24e}, {"Zr", 0x9ccfd0}, {"Mo", 0x6fb0b4}, {"Ru", 0x5b9296},
     {"Rh", 0x4b8fa0}, {"Pd", 0x5f8aa6}, {"Ag", 0xc4c8ce}, {"Cd", 0xe6cf94}, {"In", 0xb08480},
     {"Sn", 0x7f8f96}, {"Sb", 0x9a72b8}, {"Te", 0xcf8430}, {"I", 0x7b3a9c},  {"Cs", 0x65348f},
     {"Ba", 0x4aa84a}, {"La", 0x76c7dc}, {"Ce", 0xd9d9a0}, {"W", 0x5a8fc0},  {"Re", 0x5f86a8},
     {"Ir", 0x4f6f92}, {"Pt", 0xa8b0c2}, {"Au", 0xe2b832}, {"Hg", 0xaeb0c0}, {"Tl", 0xa66a58},
     {"Pb", 0x6a6e76}, {"Bi", 0xa45bab}});

Colour FromRgb(std::uint32_t rgb) {
    const auto part = [rgb](unsigned shift) { return static_cast<double>((rgb >> shift) & 0xFFU) / 255.0; };
    return {part(16), part(8), part(0)};
}

/// Hues of neighbouring numbers are a golden section of the circle apart.
Colour ByNumber(int number) {
    constexpr double kGoldenSection = 0.61803398875;
    constexpr double kMiddle = 0.68;
    constexpr double kSwing = 0.2;
    const double hue = kGoldenSection * number;
    const auto part = [hue](double shift) { return kMiddle + kSwing * std::cos(kTwoPi * (hue - shift)); };
    return {part(0.0), part(1.0 / 3.0), part(2.0 / 3.0)};
}

}  // namespace

Colour ElementColour(const std::string& element) {
    const auto found = std::find_if(kUsual.begin(), kUsual.end(),
                                    [&](const NamedColour& one) { return one.element == element; });
    return found != kUsual.end() ? FromRgb(found->rgb) : ByNumber(gemmi::Element(element).atomic_number());
}

}  // namespace qvre
