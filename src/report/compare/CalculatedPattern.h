#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/compare/Measurement.h"
#include "report/compare/SampleSetting.h"
#include "report/sphere/Instrument.h"
#include "report/sphere/SphereImage.h"

namespace qvre {

/// An image file (.xml_img) and, unless a background is taken away, that of its I0.
struct ImageFiles {
    std::string image;
    std::string i0;  ///< empty: none
};

/// A calculated intensity, and I0 if there is one, as an instrument counts them.
class CalculatedPattern {
public:
    /// Throws ZfError, with the names of the files.
    CalculatedPattern(const ImageFiles& files, const Instrument& instrument);
    CalculatedPattern(SphereImage intensity, std::optional<SphereImage> i0, const Instrument& instrument);

    bool HasI0() const { return direct_.has_value(); }
    double MaxTheta_deg() const { return maxTheta_; }  ///< the horizon of the map, 90 or 180
    double Resolution_deg() const { return intensity_.Resolution_deg(); }

    /// In every direction of a measurement I or, with I0, chi = (I - I0)/I0. NaN beyond the horizon and where
    /// I0 is faint. The same for any number of threads.
    std::vector<double> Values(const Measurement& directions, const SampleSetting& setting) const;

private:
    SphereImage intensity_;
    std::optional<SphereImage> direct_;
    double largestDirect_ = 0.0;
    double maxTheta_ = 0.0;
};

/// chi of a pattern in given directions, under any setting of the sample. A pattern without I0 loses the
/// background of these directions, of their rings with their gaps, as the measurement does.
class CalculatedModulation {
public:
    /// Keeps references to the pattern and the directions. `model` is read where the pattern has no I0.
    CalculatedModulation(const CalculatedPattern& pattern, const Measurement& directions,
                         const std::optional<BackgroundModel>& model);

    /// NaN where the pattern has no value or its background is not positive.
    std::vector<double> Under(const SampleSetting& setting) const;

private:
    const CalculatedPattern& pattern_;
    const Measurement& directions_;
    std::optional<BackgroundModel> model_;
    PolarRings rings_;
};

}  // namespace qvre
