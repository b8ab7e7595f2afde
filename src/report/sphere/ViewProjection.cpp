#include "report/sphere/ViewProjection.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"

namespace qvre {

namespace {

constexpr double kRightAngle = kPi / 2;

}  // namespace

double DiscRadius(View view, double theta) {
    if (view == View::kStereographic) return std::tan(theta / 2);
    if (view == View::kOrthographic) return std::sin(theta);
    return theta / kRightAngle;
}

double PolarAngle(View view, double radius) {
    const double inside = std::min(radius, 1.0);
    if (view == View::kStereographic) return 2 * std::atan(inside);
    if (view == View::kOrthographic) return std::asin(inside);
    return inside * kRightAngle;
}

}  // namespace qvre
