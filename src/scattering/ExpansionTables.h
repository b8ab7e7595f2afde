#pragma once

#include <array>
#include <mutex>
#include <optional>
#include <vector>

#include "scattering/ExpansionLevel.h"
#include "scattering/ThetaRows.h"
#include "scattering/ZfExpansionGrid.h"

namespace qvre {

/// What an expansion takes from its l size alone. Threads may share it: parts that not every run needs are
/// built when first asked for.
class ExpansionTables {
public:
    explicit ExpansionTables(std::int32_t size);

    const ExpansionLevel& Level(std::int32_t level) const;
    /// By group: j_L(x) kOrderScale^-L on its sphere, L < kLargestOrder.
    const std::vector<std::vector<double>>& Bessel() const;
    /// ProjectionWeights of a block of rows.
    const std::vector<double>& Weights(std::int32_t block) const;

    std::int32_t lSize;
    ZfExpansionGrid grid;  ///< without a wave number

private:
    template <class Part>
    struct OnDemand {
        std::once_flag flag;
        std::optional<Part> part;
    };
    static constexpr std::size_t kLevels = 40;

    mutable std::array<OnDemand<ExpansionLevel>, kLevels> levels_;
    mutable OnDemand<std::vector<std::vector<double>>> bessel_;
    mutable std::array<OnDemand<std::vector<double>>, kRowBlocks> weights_;
};

}  // namespace qvre
