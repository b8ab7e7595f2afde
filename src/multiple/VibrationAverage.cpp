#include "multiple/VibrationAverage.h"

#include <cmath>
#include <cstddef>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kLargestSquare = 1e4;  // of k u: nothing of the wave would be left

/// P_l(z) for l below `count`.
void FillLegendre(double z, std::size_t count, std::vector<double>& p) {
    p.assign(count + 1, 1.0);
    p[1] = z;
    for (std::size_t l = 1; l + 1 < count; ++l) {
        const auto n = static_cast<double>(l);
        p[l + 1] = ((2.0 * n + 1.0) * z * p[l] - n * p[l - 1]) / (n + 1.0);
    }
}

struct Node {
    double z;
    double weight;
};

/// Nodes of Gauss's quadrature from -1 to 1: Newton's method from Tricomi's estimate (P. J. Davis,
/// P. Rabinowitz, Methods of Numerical Integration, Academic Press 1984).
std::vector<Node> GaussLegendre(std::size_t count) {
    const auto n = static_cast<double>(count);
    std::vector<Node> nodes;
    std::vector<double> p;
    for (std::size_t i = 0; i < count; ++i) {
        double z = std::cos(kPi * (static_cast<double>(i) + 0.75) / (n + 0.5));
        double slope = 1.0;
        for (int step = 0; step < 8; ++step) {
            FillLegendre(z, count + 1, p);
            slope = n * (z * p[count] - p[count - 1]) / (z * z - 1.0);
            z -= p[count] / slope;
        }
        nodes.push_back({z, 2.0 / ((1.0 - z * z) * slope * slope)});
    }
    return nodes;
}

}  // namespace

std::vector<std::complex<double>> VibrationAverage(const std::vector<std::complex<double>>& t, double x) {
    if (!(x >= 0.0 && x <= kLargestSquare))
        throw ZfError(
            "Full scattering: the displacement of an atom is no number, or larger than in any solid");
    if (x == 0.0 || t.empty()) return t;
    // A product of two P_l has twice the order; the exponential is smooth over 1 / sqrt(x).
    const std::size_t nodes = t.size() + 24 + static_cast<std::size_t>(4.0 * std::sqrt(x) + x / 4.0);
    std::vector<std::complex<double>> averaged(t.size());
    std::vector<double> p;
    for (const auto& [z, weight] : GaussLegendre(nodes)) {
        FillLegendre(z, t.size(), p);
        std::complex<double> sum = 0.0;
        for (std::size_t l = 0; l < t.size(); ++l) sum += (2.0 * static_cast<double>(l) + 1.0) * p[l] * t[l];
        sum *= 0.5 * weight * std::exp(-x * (1.0 - z));
        for (std::size_t l = 0; l < t.size(); ++l) averaged[l] += p[l] * sum;
    }
    return averaged;
}

}  // namespace qvre
