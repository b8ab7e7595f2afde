#include "report/sphere/PolarBackground.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <numeric>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kRingWidth_deg = 0.25;
constexpr int kLargestDegree = 12;

}  // namespace

BackgroundModel ParseBackgroundModel(const std::string& text) {
    if (text == "mean") return {};
    int degree = -1;
    const char* end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, degree);
    if (status != std::errc() || stop != end || degree < 0 || degree > kLargestDegree)
        throw ZfError(
            fmt::format("A background is the degree of a polynomial from 0 to {}, or mean, not \"{}\"",
                        kLargestDegree, text));
    return {degree};
}

PolarRings::PolarRings(const std::vector<double>& pointTheta) : ringOf(pointTheta.size()) {
    std::vector<std::size_t> order(pointTheta.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&pointTheta](std::size_t i, std::size_t j) { return pointTheta[i] < pointTheta[j]; });
    double first = 0.0;
    for (const std::size_t i : order) {
        if (theta.empty() || pointTheta[i] - first >= kRingWidth_deg) {
            first = pointTheta[i];
            theta.push_back(0.0);
            points.push_back(0.0);
        }
        theta.back() += pointTheta[i];
        points.back() += 1.0;
        ringOf[i] = theta.size() - 1;
    }
    for (std::size_t ring = 0; ring < theta.size(); ++ring) theta[ring] /= points[ring];
}

PolarBackground::PolarBackground(const BackgroundModel& model, const std::vector<double>& theta,
                                 const std::vector<double>& intensity)
    : PolarBackground(model, PolarRings(theta), intensity) {}

PolarBackground::PolarBackground(const BackgroundModel& model, const PolarRings& rings,
                                 const std::vector<double>& intensity)
    : theta_(rings.theta), mean_(rings.Count()) {
    const int degree = model.degree.value_or(0);
    if (rings.Count() <= static_cast<std::size_t>(degree))
        throw ZfError(
            fmt::format("A background of degree {} needs more polar angles than the {} of the pattern: "
                        "lower the degree or widen the polar range",
                        degree, rings.Count()));
    for (std::size_t i = 0; i < intensity.size(); ++i) mean_[rings.ringOf[i]] += intensity[i];
    for (std::size_t ring = 0; ring < mean_.size(); ++ring) mean_[ring] /= rings.points[ring];
    if (model.degree) fit_.emplace(degree, theta_, mean_, rings.points);
}

double PolarBackground::At(double theta) const {
    if (fit_) return fit_->At(theta);
    const auto upper =
        static_cast<std::size_t>(std::lower_bound(theta_.begin(), theta_.end(), theta) - theta_.begin());
    if (upper == 0) return mean_.front();
    if (upper == theta_.size()) return mean_.back();
    const double t = (theta - theta_[upper - 1]) / (theta_[upper] - theta_[upper - 1]);
    return mean_[upper - 1] + t * (mean_[upper] - mean_[upper - 1]);
}

double PolarBackground::Modulation(double theta, double intensity) const {
    const double background = At(theta);
    if (background > 0.0) return (intensity - background) / background;
    throw ZfError(
        fmt::format("The background is not positive at the polar angle {:g} degrees: choose another "
                    "background or another polar range",
                    theta));
}

}  // namespace qvre
