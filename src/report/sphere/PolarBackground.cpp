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

PolarBackground::PolarBackground(const BackgroundModel& model, const std::vector<double>& theta,
                                 const std::vector<double>& intensity)
    : rings_(Rings(theta, intensity)) {
    const int degree = model.degree.value_or(0);
    if (rings_.size() <= static_cast<std::size_t>(degree))
        throw ZfError(
            fmt::format("A background of degree {} needs more polar angles than the {} of the pattern: "
                        "lower the degree or widen the polar range",
                        degree, rings_.size()));
    if (model.degree) Fit(degree);
}

std::vector<PolarBackground::Ring> PolarBackground::Rings(const std::vector<double>& theta,
                                                          const std::vector<double>& intensity) {
    std::vector<std::size_t> order(theta.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&theta](std::size_t i, std::size_t j) { return theta[i] < theta[j]; });
    std::vector<Ring> rings;
    double first = 0.0;
    for (const std::size_t i : order) {
        if (rings.empty() || theta[i] - first >= kRingWidth_deg) {
            first = theta[i];
            rings.emplace_back();
        }
        rings.back().theta += theta[i];
        rings.back().mean += intensity[i];
        rings.back().points += 1.0;
    }
    for (Ring& ring : rings) {
        ring.theta /= ring.points;
        ring.mean /= ring.points;
    }
    return rings;
}

/// Weighted least squares in polynomials that are orthogonal on the rings (G. E. Forsythe, J. Soc. Ind. Appl.
/// Math. 5, 74 (1957)): no system of equations, and no loss of digits at high degrees.
void PolarBackground::Fit(int degree) {
    std::vector<double> last(rings_.size(), 0.0);
    std::vector<double> p(rings_.size(), 1.0);
    double lastNorm = 1.0;
    for (int d = 0; d <= degree; ++d) {
        double norm = 0.0;
        double shift = 0.0;
        double projection = 0.0;
        for (std::size_t i = 0; i < rings_.size(); ++i) {
            const double weighted = rings_[i].points * p[i];
            norm += weighted * p[i];
            shift += weighted * p[i] * rings_[i].theta;
            projection += weighted * rings_[i].mean;
        }
        const Term term{shift / norm, d == 0 ? 0.0 : norm / lastNorm, projection / norm};
        terms_.push_back(term);
        for (std::size_t i = 0; i < rings_.size(); ++i) {
            const double next = (rings_[i].theta - term.a) * p[i] - term.b * last[i];
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
    const auto upper = std::lower_bound(rings_.begin(), rings_.end(), theta,
                                        [](const Ring& ring, double angle) { return ring.theta < angle; });
    if (upper == rings_.begin()) return rings_.front().mean;
    if (upper == rings_.end()) return rings_.back().mean;
    const Ring& lower = *(upper - 1);
    const double t = (theta - lower.theta) / (upper->theta - lower.theta);
    return lower.mean + t * (upper->mean - lower.mean);
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
