#include "foundation/StrictNumber.h"

#include <charconv>
#include <cmath>

#include "foundation/ZfError.h"

namespace qvre {

double StrictNumber(const std::string& text, const std::string& what) {
    const char* begin = text.data();
    const char* end = begin + text.size();
    if (begin != end && *begin == '+') ++begin;
    double value = 0.0;
    const auto [last, failure] = std::from_chars(begin, end, value);
    if (failure != std::errc() || last != end || !std::isfinite(value))
        throw ZfError(what + ": \"" + text + "\" is no number");
    return value;
}

}  // namespace qvre
