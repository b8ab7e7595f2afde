#pragma once

#include "input/LmTable.h"
#include "scattering/ZfExpansionGrid.h"

namespace qvre {

/// Squared norms of the result of a level and of its change in the next.
struct LevelChange {
    double size = 0.0;
    double difference = 0.0;
};

constexpr std::int32_t kFirstComparedLevel = 5;

/// The decision to stop when two results agree.
struct LevelDecision {
    /// Throws ZfError if the wave is not finite.
    bool Stops(std::int32_t level, const LevelChange& change);

    double tolerance = 0.001;
    std::int32_t maxLevel = 40;
    double lastError = -1.0;    ///< last relative change; negative before the first
    double nearestTie = 1e300;  ///< least |lastError - tolerance| / tolerance of all levels
};

/// What the levels of an expansion make of their integrals: from level 5 on a Richardson step from level to
/// level and the division by j_l.
class LevelRefinement {
public:
    LevelRefinement(const ZfExpansionGrid& grid, double tolerance, std::int32_t maxLevel)
        : decision{tolerance, maxLevel}, grid_(&grid) {}

    /// Takes the integral of the next level; true when it is the last one.
    bool Add(const ZfLmComplexTable& integral);

    std::int32_t level = -1;  ///< of the last integral
    LevelDecision decision;
    ZfLmComplexTable result;  ///< of the last level

private:
    const ZfExpansionGrid* grid_;
    ZfLmComplexTable raw_;
};

}  // namespace qvre
