#include "report/picture/PatternCuts.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

/// Steps over a quarter turn, two a pixel.
int QuarterSteps(const DrawnPattern& pattern) {
    return std::max(180, static_cast<int>(std::ceil(180 / pattern.resolution_deg - 1e-9)));
}

}  // namespace

Curve PolarCut(const DrawnPattern& pattern, double phi) {
    const int steps = QuarterSteps(pattern);
    Curve cut;
    for (int i = -steps; i <= steps; ++i) {
        const double angle = 90.0 * i / steps;
        cut.x.push_back(angle);
        cut.y.push_back(pattern.value(std::abs(angle) * kDegree, angle < 0 ? phi + kPi : phi));
    }
    return cut;
}

Curve AzimuthalCut(const DrawnPattern& pattern, double theta) {
    if (!(theta >= 0.0 && theta <= kPi / 2))
        throw ZfError("The polar angle of an azimuthal cut has to lie between 0 and 90 degrees");
    const int steps = 4 * QuarterSteps(pattern);
    Curve cut;
    for (int i = 0; i <= steps; ++i) {
        cut.x.push_back(360.0 * i / steps);
        cut.y.push_back(pattern.value(theta, 360.0 * i / steps * kDegree));
    }
    return cut;
}

}  // namespace qvre
