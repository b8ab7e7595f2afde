#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace qvre {

/// Directions that lie on one line: entry i of the lists belongs to one of them.
struct PatternScan {
    double angle = 0.0;              ///< what the directions have in common, degrees
    std::vector<double> along;       ///< the angle that they differ in, degrees, rising
    std::vector<std::size_t> point;  ///< index of the direction
};

/// Scans of one kind. Those at a fixed azimuth have polar angles of both signs, the negative ones at the
/// azimuth opposite.
struct PatternScans {
    bool isPolar = false;  ///< at a fixed azimuth; otherwise at a fixed polar angle
    std::vector<PatternScan> scans;
};

/// Directions (degrees) as up to three azimuthal scans or three planes of polar scans; none for those of a
/// map. Angles that differ by less than a quarter of a degree are one.
std::optional<PatternScans> FewScansOf(const std::vector<double>& theta, const std::vector<double>& phi);

}  // namespace qvre
