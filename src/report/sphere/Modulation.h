#pragma once

#include <optional>
#include <string>

#include "report/sphere/PolarBackground.h"
#include "report/sphere/SphereImage.h"

namespace qvre {

/// chi = (I - B)/B is not a number where the reference B, which is I0 or a background, is below this part of
/// its maximum on the upper hemisphere. The wave of an s level vanishes across the light, I0 with it, but
/// what the neighbours scatter does not: chi grows without bound there and says nothing of the structure.
constexpr double kFaintPart = 0.01;

/// chi of one direction; NaN where the reference is faint or not positive. `largest` is its maximum.
double ModulationAt(double intensity, double reference, double largest);

/// Largest pixel of the upper hemisphere.
double LargestOnHemisphere(const SphereImage& image);

/// "chi left out in 3.1 percent of the directions, where the free atom sends out less than 1 percent of its
/// maximum", or where the background is below it; empty when nothing is left out. `part` is that of the
/// solid angle, or of the directions that are compared.
std::string LeftOutText(double part, bool byBackground);

/// The background of an image on whole rings over the upper hemisphere, in steps of its pixels, half a degree
/// at least. Throws ZfError.
PolarBackground BackgroundOf(const SphereImage& image, const BackgroundModel& model);

/// chi = (I - B)/B as a function on the sphere. I and I0 are interpolated each by itself, so that the border
/// of what is left out is that of I0 and not of pixels. Formed last: what a measurement does to a pattern
/// acts on intensities.
class ModulationFunction {
public:
    /// B is I0. Throws ZfError when the grids differ or I0 is positive nowhere.
    ModulationFunction(SphereImage intensity, SphereImage reference);

    /// B is the background of the image itself. Throws ZfError.
    ModulationFunction(SphereImage intensity, const BackgroundModel& model);

    /// Angles in radians, as in SphereImage. NaN beyond the map and where chi is left out.
    double Value(double theta, double phi) const;

    /// The pixels of the map in the order of storage, with chi and with the reference.
    std::vector<SpherePixel> Pixels() const;
    std::vector<SpherePixel> ReferencePixels() const;

    double LeftOut() const;  ///< part of the solid angle of the upper hemisphere, 0 to 1
    bool IsByBackground() const { return background_.has_value(); }
    const SphereImage& Intensity() const { return intensity_; }

private:
    double Reference(double theta, double phi) const;

    SphereImage intensity_;
    std::optional<SphereImage> reference_;
    std::optional<PolarBackground> background_;
    double largest_ = 0.0;
};

}  // namespace qvre
