#pragma once

#include <cstdint>
#include <limits>

namespace qvre {

/// Cuts a fraction toward zero. Values that no 32-bit integer holds, infinite ones and not-a-number give the
/// most negative integer, which every size check then refuses.
inline std::int32_t TruncateToInt32(double value) {
    const bool fits = value > -2147483649.0 && value < 2147483648.0;
    return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

}  // namespace qvre
