#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qvre {

/// How the smooth background B(theta) is found from the means over the azimuth of each polar ring.
struct BackgroundModel {
    /// Degree in theta of the polynomial that is fitted to the means; none: the means themselves, joined by
    /// straight lines.
    std::optional<int> degree;
};

/// "mean" or a degree from 0 to 12. Throws ZfError for anything else.
BackgroundModel ParseBackgroundModel(const std::string& text);

/// The part of an intensity that depends on the polar angle alone, for chi = (I - B)/B: emission of the free
/// atom, attenuation, transmission of the analyser. Angles are in degrees.
class PolarBackground {
public:
    /// Points less than 0.25 degrees above the lowest polar angle of a ring belong to the ring. The fit
    /// weighs a mean with the number of its points. Throws ZfError when there are no more rings than the
    /// degree.
    PolarBackground(const BackgroundModel& model, const std::vector<double>& theta,
                    const std::vector<double>& intensity);

    /// Beyond the rings a line keeps the end value.
    double At(double theta) const;

    /// (I - B)/B. Throws ZfError where B is not positive.
    double Modulation(double theta, double intensity) const;

private:
    struct Ring {
        double theta = 0.0;
        double mean = 0.0;
        double points = 0.0;
    };
    /// Polynomials orthogonal on the rings, by their three-term recurrence p' = (theta - a) p - b p".
    struct Term {
        double a = 0.0;
        double b = 0.0;
        double coefficient = 0.0;
    };

    static std::vector<Ring> Rings(const std::vector<double>& theta, const std::vector<double>& intensity);
    void Fit(int degree);

    std::vector<Ring> rings_;
    std::vector<Term> terms_;  // of the polynomial; empty: lines
};

}  // namespace qvre
