#include "scattering/FarFieldDirections.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace qvre {

namespace {

/// Components that are the same up to the rounding of unit vectors.
constexpr double kSameComponent = 1e-15;

}  // namespace

void FarFieldDirections::Add(std::size_t index, double x, double y, double z) {
    directions.push_back({x, y, z, index});
}

/// By z, and on a ring by |x|, so that mirror images stand together; not-a-number stands last.
void FarFieldDirections::SortDirections() {
    // A counting sort into slices of z leaves little to sort: a map has a ring or a few to a slice. The place
    // breaks ties, so that the order is one.
    const std::size_t slices = directions.size();
    const auto sliceOf = [slices](const Direction& u) {
        if (std::isnan(u.z)) return slices;
        const double height = std::clamp(0.5 - 0.5 * u.z, 0.0, 1.0) * static_cast<double>(slices);
        return std::min(static_cast<std::size_t>(height), slices - 1);
    };
    std::vector<std::size_t> end(slices + 2, 0);
    for (const Direction& u : directions) ++end[sliceOf(u) + 1];
    std::partial_sum(end.begin(), end.end(), end.begin());
    std::vector<Direction> ordered(directions.size());
    for (const Direction& u : directions) ordered[end[sliceOf(u)]++] = u;
    auto first = ordered.begin();
    for (std::size_t slice = 0; slice <= slices; ++slice) {
        const auto last = ordered.begin() + static_cast<std::ptrdiff_t>(end[slice]);
        if (slice < slices)
            std::stable_sort(first, last, [](const auto& a, const auto& b) { return a.z > b.z; });
        first = last;
    }
    for (auto ring = ordered.begin(); ring != ordered.end();) {
        auto next = ring;
        while (next != ordered.end() && !(ring->z - next->z >= kSameComponent) && !std::isnan(next->z))
            ++next;
        std::stable_sort(
            ring, next, [](const Direction& a, const Direction& b) { return std::abs(a.x) < std::abs(b.x); });
        if (next == ring) ++next;
        ring = next;
    }
    directions.swap(ordered);
}

/// Whether a direction is no mirror image of the one before.
bool FarFieldDirections::StartsGroup(std::size_t direction) const {
    const Direction& a = directions[groups.back().first];
    const Direction& b = directions[direction];
    const bool mirrored = std::abs(std::abs(a.x) - std::abs(b.x)) < kSameComponent &&
                          std::abs(std::abs(a.y) - std::abs(b.y)) < kSameComponent;
    return !mirrored || groups.back().count == 4;
}

void FarFieldDirections::Order() {
    SortDirections();
    groups.clear();
    segments.clear();
    tasks.clear();
    std::size_t inTask = kTaskDirections;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const bool sameRing =
            !groups.empty() &&
            directions[groups[segments.back().firstGroup].first].z - directions[i].z < kSameComponent;
        if (!sameRing || StartsGroup(i)) {
            const bool fullTask = inTask + 4 > kTaskDirections;
            if (fullTask) tasks.push_back({segments.size(), 0});
            if (fullTask || !sameRing) segments.push_back({groups.size(), 0});
            if (fullTask) inTask = 0;
            groups.push_back({i, 0});
            segments.back().endGroup = groups.size();
            tasks.back().endSegment = segments.size();
        }
        ++groups.back().count;
        ++inTask;
    }
}

std::size_t FarFieldDirections::EndDirection(const Task& task) const {
    const Group& last = groups[segments[task.endSegment - 1].endGroup - 1];
    return last.first + last.count;
}

}  // namespace qvre
