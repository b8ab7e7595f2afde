#pragma once

#include <cstdint>
#include <vector>

#include "input/LmTable.h"

namespace qvre {

/// The points that one level adds: the point (a, b) stands at theta = pi t[a], phi = 2 pi t[b].
struct LevelPoints {
    std::vector<double> t;
    std::vector<std::int32_t> thetaIndex;
    std::vector<std::int32_t> phiIndex;
};

/// The points of GridPoints in rows of equal theta, with what the projection of a level takes from its l size
/// alone. The projection is separable: over phi in each row first, then over the rows.
struct ExpansionLevel {
    /// All points of one theta.
    struct Row {
        std::size_t firstPoint;
        std::vector<double> theta;  ///< sin(theta) times the theta factor of (l, m), in table order
        std::size_t phiSet;         ///< which of the phi sets the row has
    };
    /// Azimuths that rows share: cos(m phi) / sqrt(2 pi) and the sines, at [point * stride + m].
    struct PhiSet {
        std::vector<double> cosines;
        std::vector<double> sines;
    };

    ExpansionLevel(std::int32_t level, std::int32_t lSize);

    std::size_t points = 0;
    std::size_t rowLength = 0;
    std::size_t stride = 0;  ///< m = 0 .. lSize - 1, padded to a multiple of kSourceLanes
    std::vector<Row> rows;
    std::vector<PhiSet> phiSets;
    std::vector<double> x, y, z;  ///< unit vectors, padded
};

}  // namespace qvre

/// Nested lattice on the unit square of (theta/pi, phi/2 pi): after level n its 2^n points stand on one
/// lattice. Even levels end on a square one of spacing 2^(-n/2), odd levels add the centres of its cells.
qvre::LevelPoints GridPoints(std::int32_t level);
