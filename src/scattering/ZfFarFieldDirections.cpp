#include "scattering/ZfFarFieldDirections.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// Components that are the same up to the rounding of unit vectors.
constexpr double kSameComponent = 1e-15;

}  // namespace

void ZfFarFieldDirections::Add(std::size_t index, double x, double y, double z) {
    directions.push_back({x, y, z, index});
}

/// By z, and on a ring by |x|, so that mirror images stand together; not-a-number stands last.
void ZfFarFieldDirections::SortDirections() {
    // Sorted by small keys; the place breaks ties, so that the order is one.
    using Key = std::pair<double, std::size_t>;
    std::vector<Key> keys(directions.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = {std::isnan(directions[i].z) ? 2.0 : -directions[i].z, i};
    std::sort(keys.begin(), keys.end());
    for (auto ring = keys.begin(); ring != keys.end();) {
        auto end = ring;
        while (end != keys.end() && end->first - ring->first < kSameComponent) ++end;
        std::sort(ring, end, [this](const Key& a, const Key& b) {
            const double xa = std::abs(directions[a.second].x);
            const double xb = std::abs(directions[b.second].x);
            return xa != xb ? xa < xb : a.second < b.second;
        });
        ring = end;
    }
    std::vector<Direction> ordered(directions.size());
    std::transform(keys.begin(), keys.end(), ordered.begin(),
                   [this](const Key& key) { return directions[key.second]; });
    directions.swap(ordered);
}

/// Whether a direction is no mirror image of the one before.
bool ZfFarFieldDirections::StartsGroup(std::size_t direction) const {
    const Direction& a = directions[groups.back().first];
    const Direction& b = directions[direction];
    const bool mirrored = std::abs(std::abs(a.x) - std::abs(b.x)) < kSameComponent &&
                          std::abs(std::abs(a.y) - std::abs(b.y)) < kSameComponent;
    return !mirrored || groups.back().count == 4;
}

void ZfFarFieldDirections::Order() {
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

std::size_t ZfFarFieldDirections::EndDirection(const Task& task) const {
    const Group& last = groups[segments[task.endSegment - 1].endGroup - 1];
    return last.first + last.count;
}
