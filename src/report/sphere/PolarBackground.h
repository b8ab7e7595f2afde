#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "report/sphere/PolynomialFit.h"

namespace qvre {

/// How the smooth background B(theta) is found from the means over the azimuth of each polar ring.
struct BackgroundModel {
    /// Degree in theta of the polynomial that is fitted to the means; none: the means themselves, joined by
    /// straight lines.
    std::optional<int> degree;
};

/// "mean" or a degree from 0 to 12. Throws ZfError for anything else.
BackgroundModel ParseBackgroundModel(const std::string& text);

/// Points of equal polar angle. Those less than 0.25 degrees above the lowest polar angle of a ring belong to
/// the ring.
struct PolarRings {
    explicit PolarRings(const std::vector<double>& pointTheta);  ///< degrees

    std::size_t Count() const { return theta.size(); }

    std::vector<std::size_t> ringOf;  ///< of each point
    std::vector<double> theta;        ///< of each ring, rising: the mean of its points, degrees
    std::vector<double> points;       ///< their number
};

/// The part of an intensity that depends on the polar angle alone, for chi = (I - B)/B: emission of the free
/// atom, attenuation, transmission of the analyser. Angles are in degrees.
class PolarBackground {
public:
    /// The fit weighs a mean with the number of its points. Throws ZfError when there are no more rings than
    /// the degree.
    PolarBackground(const BackgroundModel& model, const PolarRings& rings,
                    const std::vector<double>& intensity);
    PolarBackground(const BackgroundModel& model, const std::vector<double>& theta,
                    const std::vector<double>& intensity);

    /// Beyond the rings a line keeps the end value.
    double At(double theta) const;

    /// (I - B)/B. Throws ZfError where B is not positive.
    double Modulation(double theta, double intensity) const;

private:
    std::vector<double> theta_;  // of the rings
    std::vector<double> mean_;
    std::optional<PolynomialFit> fit_;  // none: lines
};

}  // namespace qvre
