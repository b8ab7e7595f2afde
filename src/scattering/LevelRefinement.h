#pragma once

#include "input/ZfLmTable.h"
#include "scattering/ZfExpansionGrid.h"

/// What the levels of an expansion make of their integrals: a Richardson step from level to level, the
/// division by j_l, and the decision to stop when two results agree.
class LevelRefinement {
public:
    LevelRefinement(const ZfExpansionGrid& grid, double tolerance, std::int32_t maxLevel)
        : grid_(&grid), tolerance_(tolerance), maxLevel_(maxLevel) {}

    /// Takes the integral of the next level, or that of `level` at the start; true when it is the last one.
    /// Throws ZfError if the wave is not finite.
    bool Add(const ZfLmComplexTable& integral);

    std::int32_t level = -1;    ///< of the last integral
    double lastError = -1.0;    ///< last relative change; negative before the first
    double nearestTie = 1e300;  ///< least |lastError - tolerance| / tolerance of all levels
    ZfLmComplexTable result;    ///< of the last level

private:
    const ZfExpansionGrid* grid_;
    double tolerance_;
    std::int32_t maxLevel_;
    ZfLmComplexTable raw_;
};
