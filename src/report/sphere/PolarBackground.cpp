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
    if (model.degree) Fit(degree, rings.points);
}

/// Weighted least squares in polynomials that are orthogonal on the rings (G. E. Forsythe, J. Soc. Ind. Appl.
/// Math. 5, 74 (1957)): no system of equations, and no loss of digits at high degrees.
void PolarBackground::Fit(int degree, const std::vector<double>& points) {
    std::vector<double> last(mean_.size(), 0.0);
    std::vector<double> p(mean_.size(), 1.0);
    double lastNorm = 1.0;
    for (int d = 0; d <= degree; ++d) {
        double norm = 0.0;
        double shift = 0.0;
        double projection = 0.0;
        for (std::size_t i = 0; i < mean_.size(); ++i) {
            const double weighted = points[i] * p[i];
            norm += weighted * p[i];
            shift += weighted * p[i] * theta_[i];
            projection += weighted * mean_[i];
        }
        const Term term{shift / norm, d == 0 ? 0.0 : norm / lastNorm, projection / norm};
        terms_.push_back(term);
        for (std::size_t i = 0; i < mean_.size(); ++i) {
            const double next = (theta_[i] - term.a) * p[i] - term.b * last[i];
            last[i] = p[i];
            p[i] = next;
        }
        lastNorm = norm;
    }
}

double PolarBackground::At(double theta) const {
    if (!terms_.empty()) {
        double last = 0.0;
        double p = 1.0;
        double sum = 0.0;
        for (const Term& term : terms_) {
            sum += term.coefficient * p;
            const double next = (theta - term.a) * p - term.b * last;
            last = p;
            p = next;
        }
        return sum;
    }
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
