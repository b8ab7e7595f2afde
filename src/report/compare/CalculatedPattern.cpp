#include "report/compare/CalculatedPattern.h"

#include <cmath>
#include <cstdint>
#include <utility>

#include "foundation/Constants.h"
#include "report/sphere/Modulation.h"

namespace qvre {

namespace {

std::optional<SphereImage> LoadDirect(const ImageFiles& files) {
    if (files.i0.empty()) return std::nullopt;
    return LoadSphereImage(files.i0).image;
}

}  // namespace

CalculatedPattern::CalculatedPattern(const ImageFiles& files, const Instrument& instrument)
    : CalculatedPattern(LoadSphereImage(files.image).image, LoadDirect(files), instrument) {}

CalculatedPattern::CalculatedPattern(SphereImage intensity, std::optional<SphereImage> i0,
                                     const Instrument& instrument)
    : intensity_(Counted(std::move(intensity), instrument)), maxTheta_(Degrees(intensity_.MaxTheta())) {
    if (!i0) return;
    direct_ = Counted(*std::move(i0), instrument);
    CheckSameGrid(intensity_, *direct_);
    largestDirect_ = LargestOnHemisphere(*direct_);
}

std::vector<double> CalculatedPattern::Values(const Measurement& directions,
                                              const SampleSetting& setting) const {
    const SampleFrame frame(setting);
    std::vector<double> values(directions.theta.size());
    const auto count = static_cast<std::int64_t>(values.size());
    // Threads are worth their start for the grid of two images. One writer a direction.
#pragma omp parallel for schedule(static) if (count > 20000)
    for (std::int64_t k = 0; k < count; ++k) {
        const auto i = static_cast<std::size_t>(k);
        const SphereDirection at = frame.InCalculation(directions.theta[i], directions.phi[i]);
        values[i] = intensity_.Value(at.theta, at.phi);
        if (direct_) values[i] = ModulationAt(values[i], direct_->Value(at.theta, at.phi), largestDirect_);
    }
    return values;
}

CalculatedModulation::CalculatedModulation(const CalculatedPattern& pattern, const Measurement& directions,
                                           const std::optional<BackgroundModel>& model)
    : pattern_(pattern), directions_(directions), model_(model), rings_(directions.theta) {
    if (pattern.HasI0()) model_.reset();
}

std::vector<double> CalculatedModulation::Under(const SampleSetting& setting) const {
    std::vector<double> chi = pattern_.Values(directions_, setting);
    if (!model_) return chi;
    const std::vector<double> background = RingBackground(*model_, rings_, chi);
    for (std::size_t i = 0; i < chi.size(); ++i) chi[i] = (chi[i] - background[i]) / background[i];
    return chi;
}

}  // namespace qvre
