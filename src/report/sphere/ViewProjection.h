#pragma once

#include <array>

#include "foundation/Words.h"

/// How the upper hemisphere is drawn on the unit disc: its centre is the surface normal, its rim theta = 90
/// degrees. The azimuth is kept: phi = 0 to the right, counter-clockwise, as one sees the surface from
/// outside. J. P. Snyder, Map Projections: A Working Manual, USGS Professional Paper 1395 (1987).
enum class View {
    kAzimuthalEquidistant,  ///< radius theta/90 degrees
    kStereographic,         ///< radius tan(theta/2); keeps angles
    kOrthographic           ///< radius sin(theta), the parallel momentum
};

inline constexpr std::array kViewWords = {Word{"equidistant", View::kAzimuthalEquidistant},
                                          Word{"stereographic", View::kStereographic},
                                          Word{"orthographic", View::kOrthographic}};

// Angles in radians. Beyond the rim the polar angle is that of the rim.
double DiscRadius(View view, double theta);
double PolarAngle(View view, double radius);
