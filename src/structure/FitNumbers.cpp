#include "structure/FitNumbers.h"

#include <fmt/format.h>

#include <cmath>

namespace qvre {

std::string RText(double r) {
    constexpr double kSmall = 0.01;
    return fmt::format("{:.{}f}", r, std::abs(r) < kSmall ? 6 : 4);
}

std::string FixedText(double value, int decimals) {
    std::string text = fmt::format("{:.{}f}", value, decimals);
    return text.find_first_of("123456789") == std::string::npos && text.starts_with('-') ? text.substr(1)
                                                                                         : text;
}

}  // namespace qvre
