#pragma once

#include <cstddef>
#include <vector>

namespace qvre {

/// Directions for a far field, ordered so that the kernels share what is the same. On a ring of equal z the
/// theta factors are the same, and only the sum over m is left to each direction. The mirror images (+-x,
/// +-y) of a group share that sum too: its even and odd orders, with cosines and sines, are added with four
/// different signs.
class FarFieldDirections {
public:
    /// Unit vectors; `index` is the caller's number of each.
    void Add(std::size_t index, double x, double y, double z);
    void Order();

    struct Direction {
        double x, y, z;
        std::size_t index;
    };
    /// Mirror images, by their first direction.
    struct Group {
        std::size_t first;
        std::size_t count;
    };
    /// Groups of one ring.
    struct Segment {
        std::size_t firstGroup;
        std::size_t endGroup;
    };
    /// Segments that one call calculates.
    struct Task {
        std::size_t firstSegment;
        std::size_t endSegment;
    };
    static constexpr std::size_t kTaskDirections = 256;  ///< most directions of a task

    std::size_t FirstDirection(const Task& task) const {
        return groups[segments[task.firstSegment].firstGroup].first;
    }
    std::size_t EndDirection(const Task& task) const;

    std::vector<Direction> directions;
    std::vector<Group> groups;
    std::vector<Segment> segments;
    std::vector<Task> tasks;

private:
    void SortDirections();
    bool StartsGroup(std::size_t direction) const;
};

}  // namespace qvre
