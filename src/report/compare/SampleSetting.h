#pragma once

namespace qvre {

/// Polar angle and azimuth, radians.
struct SphereDirection {
    double theta = 0.0;
    double phi = 0.0;
};

/// How a sample stands in the angles of a measurement, degrees. A measured direction (theta, phi) is, in the
/// axes of the calculation, found in three steps:
///  - the polar angle becomes theta + thetaOffset, and what lies beyond the normal then goes on at phi + 180;
///  - the axis about which the azimuth turns becomes the surface normal, which leans by `tilt` towards the
///    azimuth `tiltAzimuth` of the measurement;
///  - the azimuth becomes phi - rotation.
struct SampleSetting {
    double rotation = 0.0;     ///< of the crystal about its normal, from +x towards +y
    double thetaOffset = 0.0;  ///< true polar angle less the stated one
    double tilt = 0.0;
    double tiltAzimuth = 0.0;
};

/// Throws ZfError for an offset or a tilt beyond 45 degrees.
void CheckSetting(const SampleSetting& setting);

/// Angles within the ranges in which they are told: the rotation above -180 up to 180.
SampleSetting Canonical(SampleSetting setting);

/// Turns measured directions into those of the calculation.
class SampleFrame {
public:
    explicit SampleFrame(const SampleSetting& setting);

    /// Angles in degrees. The result is in radians, phi of any turn.
    SphereDirection InCalculation(double theta, double phi) const;

private:
    double offset_;  // radians, as all
    double rotation_;
    double azimuth_;
    double cosTilt_;
    double sinTilt_;
};

}  // namespace qvre
