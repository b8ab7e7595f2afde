#include "experiment/Light.h"

#include <cmath>
#include <cstddef>

namespace qvre {

LightVector InSample(const LightVector& part, LightFrame frame, const Vec3& k) {
    if (frame == LightFrame::kSample) return part;
    const double sine = std::hypot(k[0], k[1]);
    const double x = sine > 0.0 ? k[0] / sine : 1.0;
    const double y = sine > 0.0 ? k[1] / sine : 0.0;
    const Vec3 thetaHat = {k[2] * x, k[2] * y, -sine};
    const Vec3 phiHat = {-y, x, 0.0};
    LightVector turned;
    for (std::size_t i = 0; i < 3; ++i)
        turned[i] = part[0] * thetaHat[i] + part[1] * phiHat[i] + part[2] * k[i];
    return turned;
}

}  // namespace qvre
