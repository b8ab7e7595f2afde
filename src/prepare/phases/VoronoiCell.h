#pragma once

#include <vector>

#include "foundation/Vec3.h"

namespace qvre {

/// Volume of the Voronoi cell of a point at the origin among the given neighbours: the part of space nearer
/// to it than to any of them. 0 when the cell is open, or reaches beyond the farthest neighbour. Unit: that
/// of the coordinates, cubed.
double VoronoiVolume(std::vector<Vec3> neighbours);

}  // namespace qvre
