#include "scattering/LevelRefinement.h"

#include <algorithm>
#include <cmath>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

LevelChange Compare(const ZfLmComplexTable& before, const ZfLmComplexTable& now) {
    LevelChange change;
    for (std::size_t i = 0; i < before.block.size(); ++i) {
        change.size += std::norm(before.block[i]);
        change.difference += std::norm(now.block[i] - before.block[i]);
    }
    return change;
}

}  // namespace

bool LevelRefinement::Add(const ZfLmComplexTable& integral) {
    ++level;
    ZfLmComplexTable refined = integral;
    if (level >= kFirstComparedLevel)
        for (std::size_t i = 0; i < refined.block.size(); ++i) {
            const auto l = static_cast<std::size_t>(grid_->lOfIndex.block[i]);
            refined.block[i] = (4.0 * integral.block[i] - raw_.block[i]) / 3.0 / grid_->besselAtGroup[l];
        }
    raw_ = integral;
    std::swap(result, refined);
    if (level < kFirstComparedLevel) return false;

    // The first comparison sets this level against the raw one before it, which is not divided by j_l: it
    // rarely stops the loop.
    return decision.Stops(level, Compare(refined, result));
}

bool LevelDecision::Stops(std::int32_t level, const LevelChange& change) {
    if (!std::isfinite(change.size) || !std::isfinite(change.difference))
        throw ZfError("The wave around an atom is not finite");
    if (change.size == 0.0 && change.difference == 0.0) return true;  // no source reaches this atom
    if (change.size != 0.0) {
        lastError = std::sqrt(change.difference / change.size);
        nearestTie = std::min(nearestTie, std::abs(lastError - tolerance) / tolerance);
        if (tolerance > lastError) return true;
    }
    return level >= maxLevel - 1;
}

}  // namespace qvre
