#pragma once

#include "foundation/Words.h"

namespace qvre {

/// How the upper hemisphere is drawn on the unit disc: its centre is the surface normal, its rim theta = 90
/// degrees. The azimuth is kept: phi = 0 to the right, counter-clockwise, as one sees the surface from
/// outside. J. P. Snyder, Map Projections: A Working Manual, USGS Professional Paper 1395 (1987).
enum class View {
    kAzimuthalEquidistant,  ///< radius theta/90 degrees
    kStereographic,         ///< radius tan(theta/2); keeps angles
    kOrthographic           ///< radius sin(theta), the parallel momentum
};

template <>
inline constexpr auto kWords<View> = std::to_array<Word<View>>({{"equidistant", View::kAzimuthalEquidistant},
                                                                {"stereographic", View::kStereographic},
                                                                {"orthographic", View::kOrthographic}});

// Angles in radians. Beyond the rim the polar angle is that of the rim.
double DiscRadius(View view, double theta);
double PolarAngle(View view, double radius);

}  // namespace qvre
