#include "scattering/ZfSphericalBessel.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double kTinyArgument = 1e-18;
constexpr double kSeriesArgument = 0.1;
constexpr double kSeriesTerm = 1e-18;
constexpr double kLargestY = 1e55;
constexpr double kMillerRatio = 1e-18;
constexpr double kAscendingTerm = 1e-74;
constexpr std::size_t kSeriesTerms = 11;

/// From here on the orders of any table lie far below x, where j is stable upwards too; a downward start
/// beyond x would cost x steps.
constexpr double kUpwardArgument = 1e5;

/// Coefficients (-1)^q / (2q+1)! of j_0 in powers of x^2.
constexpr std::array<double, kSeriesTerms> SeriesOfJ0() {
    std::array<double, kSeriesTerms> table{};
    double coefficient = 1.0;
    for (std::size_t q = 0; q < kSeriesTerms; ++q) {
        table[q] = coefficient;
        const double next = 2.0 * static_cast<double>(q) + 2.0;
        coefficient /= -next * (next + 1.0);
    }
    return table;
}
constexpr std::array<double, kSeriesTerms> kJ0 = SeriesOfJ0();

double J0(double x) {
    if (x >= kSeriesArgument) return std::sin(x) / x;
    double sum = 0.0;
    double power = 1.0;
    for (const double coefficient : kJ0) {
        const double term = coefficient * power;
        sum += term;
        if (std::abs(term) <= kSeriesTerm) break;
        power *= x * x;
    }
    return sum;
}

/// First term of the ascending series of j_p: x^p / (2p+1)!! (DLMF 10.53.1).
double LeadingTerm(std::int32_t p, double x) {
    double term = 1.0;
    for (std::int32_t i = 1; i <= p; ++i) term *= (0.5 * x) / (i + 0.5);
    return term;
}

}  // namespace

void ZfSphericalBessel::Calculate(std::int32_t n, double x) {
    if (n < 0) return;
    n_ = n;
    j_.assign(static_cast<std::size_t>(n) + 1, 0.0);
    y_.assign(static_cast<std::size_t>(n) + 1, kLargestY);
    if (std::abs(x) <= kTinyArgument) {
        j_[0] = 1.0;
        return;
    }
    CalculateY(x, J0(x));
    if (x > kUpwardArgument)
        CalculateJUpwards(x);
    else if (last_ < n_)
        CalculateJSeries(x);
    else
        CalculateJMiller(x);
}

void ZfSphericalBessel::CalculateY(double x, double j0) {
    double y0 = -std::cos(x) / x;
    double y1 = y0 / x - j0;
    last_ = n_;
    for (std::int32_t l = 0; l <= n_; ++l) {
        y_[static_cast<std::size_t>(l)] = y0;
        if (std::abs(y0) >= kLargestY) {
            last_ = l;
            return;
        }
        const double next = (2.0 * l + 3.0) / x * y1 - y0;
        y0 = y1;
        y1 = next;
    }
}

void ZfSphericalBessel::CalculateJUpwards(double x) {
    double j0 = std::sin(x) / x;
    double j1 = j0 / x - std::cos(x) / x;
    for (std::size_t l = 0; l < j_.size(); ++l) {
        j_[l] = j0;
        const double next = (2.0 * static_cast<double>(l) + 3.0) / x * j1 - j0;
        j0 = j1;
        j1 = next;
    }
}

void ZfSphericalBessel::CalculateJMiller(double x) {
    // Far enough beyond the wanted orders any start has died out: y tells how far.
    const double wanted = std::abs(n_ > 0 ? Y(n_ - 1) : 0.0) + std::abs(Y(n_));
    double y0 = n_ > 0 ? Y(n_ - 1) : std::sin(x) / x;
    double y1 = Y(n_);
    std::int32_t start = n_;
    do {
        const double next = (2.0 * start + 1.0) / x * y1 - y0;
        y0 = y1;
        y1 = next;
        ++start;
    } while (wanted > kMillerRatio * (std::abs(y0) + std::abs(y1)));

    double above = 1.0;
    double f = 1.0;
    for (std::int32_t l = start; l > 0; --l) {
        if (l <= n_) j_[static_cast<std::size_t>(l)] = f;
        const double below = (2.0 * l + 1.0) / x * f - above;
        above = f;
        f = below;
    }
    j_[0] = f;
    const double norm = (x * std::sin(x) + std::cos(x)) * f - x * std::cos(x) * above;
    for (double& j : j_) j /= norm;
}

void ZfSphericalBessel::CalculateJSeries(double x) {
    const std::int32_t p = last_;
    double high = LeadingTerm(p, x);
    double low = LeadingTerm(p - 1, x);
    double sumHigh = high;
    double sumLow = low;
    for (std::int32_t q = 1; std::abs(high) > kAscendingTerm && std::isfinite(high); ++q) {
        high *= -(0.25 * x * x) / (q * (p + q + 0.5));
        low *= -(0.25 * x * x) / (q * (p + q - 0.5));
        sumHigh += high;
        sumLow += low;
    }
    j_[static_cast<std::size_t>(p)] = sumHigh;
    j_[static_cast<std::size_t>(p) - 1] = sumLow;
    for (std::int32_t l = p - 1; l > 0; --l) {
        const auto i = static_cast<std::size_t>(l);
        j_[i - 1] = (2.0 * l + 1.0) / x * j_[i] - j_[i + 1];
    }
}

void ZfSphericalBessel::GetJ(std::vector<double>& j) const {
    j.assign(j_.begin(), j_.begin() + n_);
}

void ZfSphericalBessel::GetH1H2(std::vector<std::complex<double>>& h1,
                                std::vector<std::complex<double>>& h2) const {
    h1.resize(static_cast<std::size_t>(n_));
    h2.resize(static_cast<std::size_t>(n_));
    for (std::int32_t l = 0; l < n_; ++l) {
        h1[static_cast<std::size_t>(l)] = {J(l), Y(l)};
        h2[static_cast<std::size_t>(l)] = {J(l), -Y(l)};
    }
}
