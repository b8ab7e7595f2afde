#include "prepare/phases/VoronoiCell.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "foundation/Vec3.h"

namespace qvre {

namespace {

using Polygon = std::vector<Vec3>;

Vec3 Sum(const Vec3& a, double factor, const Vec3& b) {
    return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

/// A square of half diagonal `size` in the plane halfway to the neighbour.
Polygon Square(const Vec3& neighbour, double size) {
    const Vec3 axis =
        std::abs(neighbour[2]) > 0.5 * std::sqrt(Dot(neighbour, neighbour)) ? Vec3{1, 0, 0} : Vec3{0, 0, 1};
    Vec3 u = Cross(neighbour, axis);
    u = Sum({0, 0, 0}, size / std::sqrt(Dot(u, u)), u);
    Vec3 v = Cross(neighbour, u);
    v = Sum({0, 0, 0}, size / std::sqrt(Dot(v, v)), v);
    const Vec3 centre = Sum({0, 0, 0}, 0.5, neighbour);
    return {Sum(centre, 1, u), Sum(centre, 1, v), Sum(centre, -1, u), Sum(centre, -1, v)};
}

/// The part of a polygon on this side of the plane halfway to a neighbour (Sutherland and Hodgman, Commun.
/// ACM 17, 32 (1974)).
Polygon Cut(const Polygon& polygon, const Vec3& neighbour) {
    const double half = 0.5 * Dot(neighbour, neighbour);
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Vec3& from = polygon[i];
        const Vec3& to = polygon[(i + 1) % polygon.size()];
        const double a = Dot(from, neighbour) - half;
        const double b = Dot(to, neighbour) - half;
        if (a <= 0.0) kept.push_back(from);
        if ((a < 0.0 && b > 0.0) || (a > 0.0 && b < 0.0))
            kept.push_back(Sum(from, a / (a - b), Sum(to, -1.0, from)));
    }
    return kept;
}

/// Volume of the cone from the origin over a polygon.
double Cone(const Polygon& polygon) {
    double sum = 0.0;
    for (std::size_t i = 2; i < polygon.size(); ++i)
        sum += Dot(polygon[0], Cross(polygon[i - 1], polygon[i]));
    return std::abs(sum) / 6.0;
}

}  // namespace

double VoronoiVolume(std::vector<Vec3> neighbours) {
    const auto nearer = [](const Vec3& a, const Vec3& b) { return Dot(a, a) < Dot(b, b); };
    std::stable_sort(neighbours.begin(), neighbours.end(), nearer);
    if (neighbours.empty() || Dot(neighbours[0], neighbours[0]) == 0.0) return 0.0;
    const double size = 4.0 * std::sqrt(Dot(neighbours.back(), neighbours.back()));
    double reach = 0.0;  // square of the farthest corner
    double volume = 0.0;
    for (std::size_t face = 0; face < neighbours.size(); ++face) {
        Polygon polygon = Square(neighbours[face], size);
        for (std::size_t other = 0; other < neighbours.size() && !polygon.empty(); ++other)
            if (other != face) polygon = Cut(polygon, neighbours[other]);
        for (const Vec3& corner : polygon) reach = std::max(reach, Dot(corner, corner));
        volume += Cone(polygon);
    }
    // A neighbour that is not in the list lies beyond all of those, and could still cut corners off beyond
    // half its distance.
    return 4.0 * reach <= Dot(neighbours.back(), neighbours.back()) * (1.0 + 1e-9) ? volume : 0.0;
}

}  // namespace qvre
