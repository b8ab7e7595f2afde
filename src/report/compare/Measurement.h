#pragma once

#include <optional>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "report/sphere/PolarBackground.h"

namespace qvre {

struct MeasuredPattern;

/// Where the standard deviations come from that weigh the measured points.
enum class SigmaSource {
    kNone,    ///< all points alike
    kColumn,  ///< the column sigma of the table
    kCounts,  ///< sqrt(N) of N counts
};

template <>
inline constexpr auto kWords<SigmaSource> = std::to_array<Word<SigmaSource>>(
    {{"none", SigmaSource::kNone}, {"column", SigmaSource::kColumn}, {"counts", SigmaSource::kCounts}});

/// Directions, degrees, and what was found in them. Entry i of every list belongs to direction i.
struct Measurement {
    std::vector<double> theta;  ///< as stated, in the axes of the measurement
    std::vector<double> phi;
    std::vector<double> value;   ///< an intensity, or chi
    std::vector<double> weight;  ///< 1 for a measured point, sin(theta) for a point of a grid
    std::vector<double> sigma;   ///< standard deviation of the values; empty: none is known
    bool isModulation = false;   ///< the values are chi, and lose no background

    /// The directions i for which keep(i).
    template <class Predicate>
    Measurement Kept(const Predicate& keep) const {
        Measurement kept;
        kept.isModulation = isModulation;
        for (std::size_t i = 0; i < theta.size(); ++i)
            if (keep(i)) Copy(i, kept);
        return kept;
    }

private:
    void Copy(std::size_t i, Measurement& to) const;
};

/// The measured points from thetaMin to thetaMax. Without a background their values are the column chi. With
/// one they are the intensities or, in a table of chi alone, 1 + chi: an intensity over a background of its
/// own, to lose the common one as well. `name` of the table is for messages. Throws ZfError when the table
/// has no column that serves.
Measurement PointsOf(const MeasuredPattern& pattern, const std::string& name, double thetaMin,
                     double thetaMax, bool hasBackground, SigmaSource sigma);

/// Centres of cells of about `step` degrees that divide the belt, each ring with the same azimuths; without
/// values.
Measurement GridOf(double step, double thetaMin, double thetaMax);

/// The background of an intensity, found from the very directions that `rings` were made of: at each
/// direction that of its ring, NaN where it is not positive.
std::vector<double> RingBackground(const BackgroundModel& model, const PolarRings& rings,
                                   const std::vector<double>& intensity);

/// chi of directions with their weights: those of the measurement, over the variance of chi where it is
/// known.
struct WeightedModulation {
    std::vector<double> chi;
    std::vector<double> weight;  ///< of mean 1 where variances are known
    double meanWeight = 1.0;     ///< the mean of 1/variance, by which these weights are divided
};

/// chi = (I - B)/B of a measurement. Throws ZfError where the background is not positive, and for the means
/// of rings of which most have a single point, as in a polar scan: they would take all away.
WeightedModulation ModulationOf(const Measurement& measurement, const std::optional<BackgroundModel>& model);

}  // namespace qvre
