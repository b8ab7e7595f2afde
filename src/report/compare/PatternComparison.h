#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "report/compare/CalculatedPattern.h"
#include "report/compare/MeasuredPattern.h"
#include "report/compare/Measurement.h"
#include "report/compare/ReliabilityFactor.h"
#include "report/compare/SampleSetting.h"
#include "report/compare/SettingSearch.h"
#include "report/sphere/Instrument.h"
#include "report/sphere/PolarBackground.h"

namespace qvre {

/// What is compared with what: the image `second`, which is turned and scaled, with the image `first` or,
/// where a file is named, with the measured points of `measured`. Angles in degrees.
struct CompareRequest {
    ImageFiles first;
    std::string measured;  ///< takes the place of `first`; empty: none
    ScanDirection scan;    ///< of measured points, as far as the file does not tell it
    ImageFiles second;
    double thetaMin = 0.0;
    double thetaMax = 90.0;
    /// chi = (I - B)/B for all that has no I0. Without it, images need their I0 and measured points a column
    /// chi.
    std::optional<BackgroundModel> background;
    SigmaSource sigma = SigmaSource::kNone;  ///< of measured points
    Instrument instrument;                   ///< acts on every image
    SampleSetting setting;                   ///< how `second` is turned, as far as it is not looked for
    SearchedSettings searched;               ///< what of it is looked for: the best agreement
};

/// Entry i of the lists belongs to direction i: a measured point, or a point of a grid of directions.
struct CompareResult {
    std::string nameA;  ///< of its file, without folder and extension
    std::string nameB;
    std::string modulationA;  ///< what stands for the smooth part of its chi: "I0", "ring means", ...
    std::string modulationB;
    Agreement agreement;
    double multipoleR = 0.0;  ///< MultipoleFactor
    /// chi_b(theta, phi) is that of `second` in the direction that the setting makes of (theta, phi). Of
    /// rotations that serve equally well the smallest.
    SampleSetting setting;
    std::vector<std::size_t> number;  ///< of the direction among all of the measurement
    std::vector<double> theta;        ///< degrees
    std::vector<double> phi;          ///< degrees
    std::vector<double> weight;
    std::vector<double> chiA;
    std::vector<double> chiB;      ///< turned, not scaled
    std::size_t leftOut = 0;       ///< directions that take no part, since I0 is faint there
    std::size_t belowHorizon = 0;  ///< directions that the setting turns below the surface

    std::size_t Directions() const { return theta.size(); }
};

/// The background for measured points when none is asked for: none for a table with a column chi; a cubic,
/// which serves points that lie on no rings as well, where means over the azimuth would take the pattern
/// away; the means for azimuthal scans, whose few polar angles hold no cubic. Throws ZfError.
std::optional<BackgroundModel> UsualBackground(const CompareRequest& request);

/// Throws ZfError when the measured points of a request cannot be compared with any pattern: no file that can
/// be read, an empty range, nothing that takes the place of chi, a constant modulation.
void CheckMeasuredPoints(const CompareRequest& request);

/// Compares over the directions with thetaMin <= theta <= thetaMax:
///     measured directions and values                     -> Measurement
///     I and I0 as the instrument counts them             -> CalculatedPattern
///     in these directions, as the sample stands          -> SampleSetting
///     both less the background of these directions: chi  -> RingBackground
///     R.
/// Two images are compared on a grid of polar angle and azimuth of the finer one's resolution, but not finer
/// than half a degree. The result is the same for any number of threads. Throws ZfError for files that cannot
/// be read, missing I0, an empty range, constant modulations, settings out of range.
CompareResult ComparePatterns(const CompareRequest& request);

/// The measured points of a request, to be compared with one pattern after the other; its images do not
/// count.
class MeasuredComparison {
public:
    /// Throws ZfError as ComparePatterns.
    explicit MeasuredComparison(const CompareRequest& request);

    /// The same as ComparePatterns of the pattern's files. With a setting what is searched is searched around
    /// it. Called from several threads.
    CompareResult With(const CalculatedPattern& pattern,
                       const std::optional<SampleSetting>& near = std::nullopt) const;

    const CompareRequest& Request() const { return request_; }
    const Measurement& Points() const { return points_; }  ///< all in the polar range

private:
    CompareRequest request_;
    std::string modulation_;
    Measurement points_;
};

/// "polar offset 2.03 degrees, tilt 0.50 degrees towards 120 degrees", what was given or found beside the
/// rotation; empty without.
std::string SettingText(const CompareRequest& request, const SampleSetting& setting);

/// What the user should know of a comparison, in lines: sides that were not treated alike, directions that
/// take no part, a setting at the end of its range.
std::string ComparisonRemarks(const CompareRequest& request, const CompareResult& result);

}  // namespace qvre
