#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/compare/MeasuredPattern.h"
#include "report/compare/ReliabilityFactor.h"
#include "report/sphere/PolarBackground.h"
#include "report/sphere/SphereImage.h"

namespace qvre {

/// An image file (.xml_img) and, unless a background is taken away, that of its I0.
struct ImageFiles {
    std::string image;
    std::string i0;  ///< empty: none
};

/// What is compared with what: `second`, which is turned and scaled, with the image `first` or, where a file
/// is named, with the measured points of `measured`. Angles in degrees.
struct CompareRequest {
    ImageFiles first;
    std::string measured;  ///< takes the place of `first`; empty: none
    ImageFiles second;
    double thetaMin = 0.0;
    double thetaMax = 90.0;
    /// chi = (I - B)/B for all that has no I0. Without it, images need their I0 and measured points a column
    /// chi.
    std::optional<BackgroundModel> background;
    bool rotate = false;  ///< look for the azimuthal rotation of `second` with the best agreement
};

/// Entry i of the lists belongs to direction i: a measured point, or a point of a grid of directions.
struct CompareResult {
    std::string nameA;  ///< of its file, without folder and extension
    std::string nameB;
    Agreement agreement;
    /// Degrees, above -180 up to 180, by which `second` was turned about the surface normal, from +x towards
    /// +y: chi_b(theta, phi) is its modulation at (theta, phi - rotation). Of rotations that serve equally
    /// well the smallest.
    double rotation = 0.0;
    std::vector<double> theta;   ///< degrees
    std::vector<double> phi;     ///< degrees
    std::vector<double> weight;  ///< 1 for a measured point, sin(theta) for a point of the grid
    std::vector<double> chiA;
    std::vector<double> chiB;  ///< turned, not scaled
};

/// Throws ZfError when the measured points of a request cannot be compared with any pattern: no file that can
/// be read, an empty range, nothing that takes the place of chi, a constant modulation.
void CheckMeasuredPoints(const CompareRequest& request);

/// Compares over the directions with thetaMin <= theta <= thetaMax. Two images are compared on a grid of
/// polar angle and azimuth of the finer one's resolution, but not finer than half a degree. The result is the
/// same for any number of threads. Throws ZfError for files that cannot be read, missing I0, an empty range,
/// constant modulations.
CompareResult ComparePatterns(const CompareRequest& request);

}  // namespace qvre
