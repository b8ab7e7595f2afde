#pragma once

#include "report/picture/DrawnPattern.h"
#include "report/picture/LinePlot.h"

namespace qvre {

/// Values along the great circle through the surface normal at azimuth phi (radians), against the polar angle
/// in degrees: from -90, at azimuth phi + 180 degrees, to 90 at phi. In steps of half a pixel,
/// or half a degree if that is less.
Curve PolarCut(const DrawnPattern& pattern, double phi);

/// Values at the polar angle theta (radians, 0 to pi/2), against the azimuth from 0 to 360 degrees, in the
/// same steps. Throws ZfError for another theta.
Curve AzimuthalCut(const DrawnPattern& pattern, double theta);

}  // namespace qvre
