#include "report/sphere/Modulation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kHorizon = kPi / 2 + 1e-9;
constexpr double kFinestRings_deg = 0.5;

}  // namespace

double ModulationAt(double intensity, double reference, double largest) {
    const bool isFaint = !(reference > 0.0 && reference >= kFaintPart * largest);
    return isFaint ? std::numeric_limits<double>::quiet_NaN() : (intensity - reference) / reference;
}

double LargestOnHemisphere(const SphereImage& image) {
    double largest = -std::numeric_limits<double>::infinity();
    for (const SpherePixel& p : image.Pixels())
        if (p.theta <= kHorizon) largest = std::max(largest, p.value);
    return largest;
}

std::string LeftOutText(double part, bool byBackground) {
    if (!(part > 0.0)) return {};
    return fmt::format(
        "chi left out in {:.2g} percent of the directions, where {} {:g} percent of its maximum",
        100.0 * part, byBackground ? "the background is below" : "the free atom sends out less than",
        100.0 * kFaintPart);
}

PolarBackground BackgroundOf(const SphereImage& image, const BackgroundModel& model) {
    const double step = std::max(kFinestRings_deg, image.Resolution_deg());
    const auto rings = std::max(1L, std::lround(90.0 / step));
    const auto azimuths = std::lround(360.0 / step);
    std::vector<double> theta;
    std::vector<double> intensity;
    for (long ring = 0; ring < rings; ++ring) {
        const double angle = 90.0 * (static_cast<double>(ring) + 0.5) / static_cast<double>(rings);
        for (long k = 0; k < azimuths; ++k) {
            theta.push_back(angle);
            intensity.push_back(image.Value(angle * kDegree,
                                            kTwoPi * static_cast<double>(k) / static_cast<double>(azimuths)));
        }
    }
    return {model, theta, intensity};
}

ModulationFunction::ModulationFunction(SphereImage intensity, SphereImage reference)
    : intensity_(std::move(intensity)), reference_(std::move(reference)) {
    CheckSameGrid(intensity_, *reference_);
    largest_ = LargestOnHemisphere(*reference_);
    if (!(largest_ > 0.0)) throw ZfError("I0 is positive in no direction: take the I0 image of the same run");
}

ModulationFunction::ModulationFunction(SphereImage intensity, const BackgroundModel& model)
    : intensity_(std::move(intensity)), background_(BackgroundOf(intensity_, model)) {
    for (double theta = 0.0; theta <= 90.0; theta += kFinestRings_deg)
        largest_ = std::max(largest_, background_->At(theta));
    if (!(largest_ > 0.0))
        throw ZfError("The background is positive at no polar angle: the image holds no intensities");
}

double ModulationFunction::Reference(double theta, double phi) const {
    return background_ ? background_->At(Degrees(theta)) : reference_->Value(theta, phi);
}

double ModulationFunction::Value(double theta, double phi) const {
    return ModulationAt(intensity_.Value(theta, phi), Reference(theta, phi), largest_);
}

std::vector<SpherePixel> ModulationFunction::ReferencePixels() const {
    if (reference_) return reference_->Pixels();
    std::vector<SpherePixel> pixels = intensity_.Pixels();
    for (SpherePixel& p : pixels) p.value = background_->At(Degrees(p.theta));
    return pixels;
}

std::vector<SpherePixel> ModulationFunction::Pixels() const {
    std::vector<SpherePixel> pixels = intensity_.Pixels();
    const std::vector<SpherePixel> below = ReferencePixels();
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i].value = ModulationAt(pixels[i].value, below[i].value, largest_);
    return pixels;
}

double ModulationFunction::LeftOut() const {
    double all = 0.0;
    double out = 0.0;
    for (const SpherePixel& p : Pixels()) {
        if (p.theta > kHorizon) continue;
        all += p.weight;
        if (std::isnan(p.value)) out += p.weight;
    }
    return out / all;
}

}  // namespace qvre
