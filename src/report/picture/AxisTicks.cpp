#include "report/picture/AxisTicks.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace qvre {

namespace {

/// Ticks at the very ends count in spite of rounding.
constexpr double kEndRounding = 1e-9;

double NiceStep(double roughStep) {
    const double decade = std::pow(10.0, std::floor(std::log10(roughStep)));
    for (const double multiple : {1.0, 2.0, 5.0}) {
        if (multiple * decade >= roughStep * (1 - kEndRounding)) return multiple * decade;
    }
    return 10 * decade;
}

/// With a true minus sign, which has the width of a plus.
std::string NumberText(double value, int decimals) {
    return fmt::format("{}{:.{}f}", value < 0 ? "\u2212" : "", std::abs(value), decimals);
}

std::string PowerOfTen(int exponent) {
    constexpr std::array<const char*, 10> kRaised = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = exponent < 0 ? "×10⁻" : "×10";
    for (const char digit : std::to_string(std::abs(exponent)))
        text += kRaised.at(static_cast<std::size_t>(digit - '0'));
    return text;
}

/// 0 where plain decimals are readable.
int CommonExponent(const Span& span) {
    const double largest = std::max(std::abs(span.low), std::abs(span.high));
    if (largest == 0.0 || (largest >= 0.01 && largest < 1e5)) return 0;
    return static_cast<int>(std::floor(std::log10(largest)));
}

}  // namespace

AxisTicks StepTicks(const Span& span, double step) {
    AxisTicks ticks;
    const int exponent = CommonExponent(span);
    const double unit = std::pow(10.0, exponent);
    const double scaledStep = step / unit;
    const int decimals =
        std::clamp(static_cast<int>(std::ceil(-std::log10(scaledStep) - kEndRounding)), 0, 9);
    const auto first = static_cast<std::int64_t>(std::ceil(span.low / step - kEndRounding));
    const auto last = static_cast<std::int64_t>(std::floor(span.high / step + kEndRounding));
    for (std::int64_t i = first; i <= last; ++i) {
        ticks.positions.push_back(static_cast<double>(i) * step);
        ticks.labels.push_back(NumberText(static_cast<double>(i) * scaledStep, decimals));
    }
    if (exponent != 0) ticks.factor = PowerOfTen(exponent);
    return ticks;
}

AxisTicks NiceTicks(const Span& span, int most) {
    return StepTicks(span, NiceStep((span.high - span.low) / most));
}

Span Widened(const Span& span) {
    const double size = std::max(std::abs(span.low), std::abs(span.high));
    if (span.high - span.low > 1e-9 * size) return span;
    const double margin = size > 0.0 ? 0.1 * size : 1.0;
    return {span.low - margin, span.high + margin};
}

}  // namespace qvre
