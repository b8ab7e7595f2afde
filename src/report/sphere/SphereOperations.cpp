#include "report/sphere/SphereOperations.h"

#include <fmt/format.h>

#include <cmath>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

struct Node {
    double x = 0.0;
    double weight = 0.0;
};

/// Gauss-Legendre nodes on [-1, 1]: roots of P_n by Newton's method from Tricomi's estimate
/// (P. J. Davis, P. Rabinowitz, Methods of Numerical Integration, 2nd ed., section 2.7).
std::vector<Node> GaussLegendre(int n) {
    constexpr int kNewtonSteps = 8;
    std::vector<Node> nodes;
    for (int i = 0; i < n; ++i) {
        double x = std::cos(kPi * (i + 0.75) / (n + 0.5));
        double slope = 1.0;
        for (int step = 0; step < kNewtonSteps; ++step) {
            double p = 1.0;
            double before = 0.0;
            for (int k = 1; k <= n; ++k) {
                const double next = ((2 * k - 1) * x * p - (k - 1) * before) / k;
                before = p;
                p = next;
            }
            slope = n * (before - x * p) / (1 - x * x);
            x -= p / slope;
        }
        nodes.push_back({x, 2 / ((1 - x * x) * slope * slope)});
    }
    return nodes;
}

/// A direction of the cone around +z, with its share of the solid angle.
struct ConePoint {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double weight = 0.0;
};

/// Gauss in the cosine times equal steps of azimuth. Two pixels a ring resolve what the map resolves.
std::vector<ConePoint> ConePoints(double halfAngle, double pixel) {
    const int rings = 3 + static_cast<int>(std::ceil(halfAngle / (2 * pixel)));
    const int steps = 4 * rings;
    const double height = 1 - std::cos(halfAngle);
    std::vector<ConePoint> points;
    for (const Node& node : GaussLegendre(rings)) {
        const double z = 1 - height * (1 - node.x) / 2;
        const double radius = std::sqrt(1 - z * z);
        for (int i = 0; i < steps; ++i) {
            const double angle = 2 * kPi * (i + 0.5) / steps;
            points.push_back(
                {radius * std::cos(angle), radius * std::sin(angle), z, node.weight / (2 * steps)});
        }
    }
    return points;
}

struct WeightedMean {
    void Add(double value, double weight) {
        sum += weight * value;
        weights += weight;
    }
    double sum = 0.0;
    double weights = 0.0;
};

double ConeMean(const SphereImage& image, const std::vector<ConePoint>& cone, double theta, double phi) {
    const double c = std::cos(theta);
    const double s = std::sin(theta);
    WeightedMean above;
    WeightedMean below;
    for (const ConePoint& p : cone) {
        // In the frame of the axis: x along theta, y along phi.
        const double along = c * p.x + s * p.z;
        const double z = c * p.z - s * p.x;
        if (z < 0.0 && (theta <= kPi / 2 || above.weights > 0.0)) continue;
        const double value = image.Value(std::atan2(std::hypot(along, p.y), z), phi + std::atan2(p.y, along));
        (z < 0.0 ? below : above).Add(value, p.weight);
    }
    return above.weights > 0.0 ? above.sum / above.weights : below.sum / below.weights;
}

}  // namespace

SphereImage SymmetryAverage(const SphereImage& image, int n, std::optional<double> mirror) {
    if (n < 1) throw ZfError(fmt::format("A rotation axis has to be 1-fold or higher, not {}-fold", n));
    return image.Transformed([&image, n, mirror](double theta, double phi) {
        double sum = 0.0;
        for (int k = 0; k < n; ++k) {
            const double rotated = phi + 2 * kPi * k / n;
            sum += image.Value(theta, rotated);
            if (mirror) sum += image.Value(theta, 2 * *mirror - rotated);
        }
        return sum / (mirror ? 2 * n : n);
    });
}

SphereImage AcceptanceAverage(const SphereImage& image, double halfAngle) {
    if (!(halfAngle > 0.0 && halfAngle <= kPi / 4))
        throw ZfError("The half angle of the acceptance has to be above 0 and at most 45 degrees");
    const std::vector<ConePoint> cone = ConePoints(halfAngle, Radians(image.Resolution_deg()));
    return image.Transformed(
        [&image, &cone](double theta, double phi) { return ConeMean(image, cone, theta, phi); });
}

SphereImage Refracted(const SphereImage& image, double energy, double innerPotential) {
    if (!(innerPotential >= 0.0 && innerPotential < energy && std::isfinite(energy)))
        throw ZfError(fmt::format(
            "The inner potential has to be 0 or more and below the kinetic energy inside: {:g} of "
            "{:g} eV are not",
            innerPotential, energy));
    if (innerPotential == 0.0) return image;
    const double ratio = (energy - innerPotential) / energy;
    return image.Transformed([&image, ratio](double theta, double phi) {
        const double s = std::sqrt(ratio) * std::sin(theta);
        const double cosInside = std::sqrt(1 - s * s);
        return image.Value(std::asin(s), phi) * ratio * std::cos(theta) / cosInside;
    });
}

}  // namespace qvre
