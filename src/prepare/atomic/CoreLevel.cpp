#include "prepare/atomic/CoreLevel.h"

#include <cstddef>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

const std::string kLetters = "spdf";

}  // namespace

std::string CoreLevel::Name() const {
    std::string name = std::to_string(n) + kLetters[static_cast<std::size_t>(l)];
    if (twiceJ > 0) name += std::to_string(twiceJ) + "/2";
    return name;
}

CoreLevel ParseCoreLevel(const std::string& text) {
    for (int n = 1; n <= 4; ++n)
        for (int l = 0; l < n; ++l)
            for (const int twiceJ : {0, 2 * l - 1, 2 * l + 1}) {
                const CoreLevel level{n, l, twiceJ};
                if (twiceJ >= 0 && level.Name() == text) return {n, l, l == 0 ? 0 : twiceJ};
            }
    throw ZfError("\"" + text + "\" is no core level: give one of 1s to 4f, such as 2p or 2p3/2");
}

}  // namespace qvre
