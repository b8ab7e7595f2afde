#include "report/compare/EnergyBackground.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "report/sphere/PolynomialFit.h"

namespace qvre {

namespace {

constexpr int kLargestDegree = 12;

/// The curve f of the least sum (y_i - f(x_i))^2 + stiffness integral f''^2, at the x_i: a natural cubic
/// spline (C. H. Reinsch, Numer. Math. 10, 177 (1967)). With its second derivatives g at the inner points,
///     (R + stiffness Q'Q) g = Q'y,   f = y - stiffness Q g,
/// where R is tridiagonal, (Q'y)_i the difference of the slopes on both sides of the point i.
std::vector<double> SmoothingSpline(const std::vector<double>& x, const std::vector<double>& y,
                                    double stiffness) {
    const std::size_t inner = x.size() - 2;
    // The three entries of each column of Q, and the system as its diagonal and two bands above.
    std::vector<double> q0(inner);
    std::vector<double> q1(inner);
    std::vector<double> q2(inner);
    std::vector<double> g(inner);
    for (std::size_t i = 0; i < inner; ++i) {
        q0[i] = 1.0 / (x[i + 1] - x[i]);
        q2[i] = 1.0 / (x[i + 2] - x[i + 1]);
        q1[i] = -q0[i] - q2[i];
        g[i] = q0[i] * y[i] + q1[i] * y[i + 1] + q2[i] * y[i + 2];
    }
    std::vector<double> diagonal(inner);
    std::vector<double> first(inner, 0.0);
    std::vector<double> second(inner, 0.0);
    for (std::size_t i = 0; i < inner; ++i) {
        diagonal[i] = (x[i + 2] - x[i]) / 3.0 + stiffness * (q0[i] * q0[i] + q1[i] * q1[i] + q2[i] * q2[i]);
        if (i + 1 < inner)
            first[i] = (x[i + 2] - x[i + 1]) / 6.0 + stiffness * (q1[i] * q0[i + 1] + q2[i] * q1[i + 1]);
        if (i + 2 < inner) second[i] = stiffness * q2[i] * q0[i + 2];
    }
    // Elimination without pivots: the matrix is positive definite.
    for (std::size_t i = 0; i < inner; ++i) {
        if (i + 1 < inner) {
            const double factor = first[i] / diagonal[i];
            diagonal[i + 1] -= factor * first[i];
            first[i + 1] -= factor * second[i];
            g[i + 1] -= factor * g[i];
        }
        if (i + 2 < inner) {
            const double factor = second[i] / diagonal[i];
            diagonal[i + 2] -= factor * second[i];
            g[i + 2] -= factor * g[i];
        }
    }
    for (std::size_t i = inner; i-- > 0;) {
        if (i + 1 < inner) g[i] -= first[i] * g[i + 1];
        if (i + 2 < inner) g[i] -= second[i] * g[i + 2];
        g[i] /= diagonal[i];
    }
    std::vector<double> f = y;
    for (std::size_t i = 0; i < inner; ++i) {
        f[i] -= stiffness * q0[i] * g[i];
        f[i + 1] -= stiffness * q1[i] * g[i];
        f[i + 2] -= stiffness * q2[i] * g[i];
    }
    return f;
}

/// Of points a mean distance d apart an oscillation of the angular frequency w keeps 1/(1 + stiffness d w^4).
double Stiffness(const std::vector<double>& energy) {
    const double range = energy.back() - energy.front();
    const double distance = range / static_cast<double>(energy.size() - 1);
    return std::pow(range / kTwoPi, 4) / distance;
}

}  // namespace

std::string EnergyBackgroundModel::Text() const {
    return degree ? fmt::format("a polynomial of degree {}", *degree) : "a smoothing spline";
}

EnergyBackgroundModel ParseEnergyBackground(const std::string& text) {
    if (text == "spline") return {};
    int degree = -1;
    const char* end = text.data() + text.size();
    const auto [stop, status] = std::from_chars(text.data(), end, degree);
    if (status != std::errc() || stop != end || degree < 0 || degree > kLargestDegree)
        throw ZfError(fmt::format(
            "a background over the energy is the degree of a polynomial from 0 to {}, or \"spline\", not "
            "\"{}\"",
            kLargestDegree, text));
    return {degree};
}

std::size_t EnergiesNeeded(const EnergyBackgroundModel& model) {
    constexpr int kOfSpline = 4;
    return static_cast<std::size_t>(model.degree ? *model.degree + 2 : kOfSpline);
}

std::vector<double> EnergyBackground(const EnergyBackgroundModel& model, const std::vector<double>& energy,
                                     const std::vector<double>& intensity) {
    if (!model.degree) return SmoothingSpline(energy, intensity, Stiffness(energy));
    const PolynomialFit fit(*model.degree, energy, intensity, std::vector<double>(energy.size(), 1.0));
    std::vector<double> background;
    background.reserve(energy.size());
    for (const double at : energy) background.push_back(fit.At(at));
    return background;
}

std::vector<double> EnergyModulation(const EnergyBackgroundModel& model, const std::vector<double>& energy,
                                     const std::vector<double>& intensity) {
    if (energy.size() < EnergiesNeeded(model))
        throw ZfError(fmt::format("{} as the background needs {} energies or more, there are {}",
                                  model.Text(), EnergiesNeeded(model), energy.size()));
    std::vector<double> chi = EnergyBackground(model, energy, intensity);
    for (std::size_t i = 0; i < chi.size(); ++i)
        chi[i] = chi[i] > 0.0 ? (intensity[i] - chi[i]) / chi[i] : std::numeric_limits<double>::quiet_NaN();
    return chi;
}

}  // namespace qvre
