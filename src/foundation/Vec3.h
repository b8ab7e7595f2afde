#pragma once

#include <array>

namespace qvre {

/// A vector in space by its cartesian components.
using Vec3 = std::array<double, 3>;

constexpr double Dot(const Vec3& a, const Vec3& b) {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

constexpr Vec3 Cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

}  // namespace qvre
