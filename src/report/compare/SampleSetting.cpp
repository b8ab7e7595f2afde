#include "report/compare/SampleSetting.h"

#include <cmath>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

void CheckSetting(const SampleSetting& setting) {
    constexpr double kMostDegrees = 45.0;
    if (!(std::abs(setting.thetaOffset) <= kMostDegrees))
        throw ZfError("The polar offset has to lie between -45 and 45 degrees");
    if (!(std::abs(setting.tilt) <= kMostDegrees))
        throw ZfError("The tilt has to lie between 0 and 45 degrees");
}

SampleSetting Canonical(SampleSetting setting) {
    // Above -180 up to 180: -180 itself rounds to 180.
    setting.rotation -= 360.0 * std::ceil((setting.rotation - 180.0) / 360.0);
    if (setting.tilt < 0.0) {
        setting.tilt = -setting.tilt;
        setting.tiltAzimuth += 180.0;
    }
    setting.tiltAzimuth -= 360.0 * std::floor(setting.tiltAzimuth / 360.0);
    return setting;
}

SampleFrame::SampleFrame(const SampleSetting& setting)
    : offset_(setting.thetaOffset * kDegree),
      rotation_(setting.rotation * kDegree),
      azimuth_(setting.tiltAzimuth * kDegree),
      cosTilt_(std::cos(setting.tilt * kDegree)),
      sinTilt_(std::sin(setting.tilt * kDegree)) {}

SphereDirection SampleFrame::InCalculation(double theta, double phi) const {
    const double polar = theta * kDegree + offset_;
    const double azimuth = phi * kDegree;
    if (sinTilt_ == 0.0) return {std::abs(polar), azimuth - rotation_ + (polar < 0.0 ? kPi : 0.0)};
    // x towards the azimuth of the tilt; the turn about y takes the normal (sin t, 0, cos t) to z.
    const double x = std::sin(polar) * std::cos(azimuth - azimuth_);
    const double y = std::sin(polar) * std::sin(azimuth - azimuth_);
    const double z = std::cos(polar);
    const double turnedX = cosTilt_ * x - sinTilt_ * z;
    const double turnedZ = sinTilt_ * x + cosTilt_ * z;
    return {std::atan2(std::hypot(turnedX, y), turnedZ), std::atan2(y, turnedX) + azimuth_ - rotation_};
}

}  // namespace qvre
