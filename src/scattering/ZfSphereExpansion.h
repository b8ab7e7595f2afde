#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "input/ZfLmTable.h"
#include "scattering/ZfExpansionGrid.h"
#include "scattering/ZfWaveFunction.h"

/// The points that one level adds: the point (a, b) stands at theta = pi t[a], phi = 2 pi t[b].
struct ZfLevelPoints {
    std::vector<double> t;
    std::vector<std::int32_t> thetaIndex;
    std::vector<std::int32_t> phiIndex;
};

/// Nested lattice on the unit square of (theta/pi, phi/2 pi): after level n its 2^n points stand on one
/// lattice. Even levels end on a square one of spacing 2^(-n/2), odd levels add the centres of its cells.
ZfLevelPoints GridPoints(std::int32_t level);

/// Expands a wave that is regular around the origin,
///     psi(r) = sum_lm c(l,m) j_l(kr) Y_lm,
/// by projection on the spherical harmonics: quadrature over a sphere for each group of l values, on a nested
/// grid that doubles its points a level, with a Richardson step from level to level, until two results agree.
/// The table of c(l,m) is good as long as every source stands outside the spheres.
class ZfSphereExpansion {
public:
    /// The level loop. The radius must not be 0, else the bare text "r value is illigal"; it has no other
    /// effect. Throws ZfError if the wave is not finite.
    void Expand(ZfLmComplexTable& result, const ZfWaveFunction& source, double radius);

    /// Adds the points of the current level and gives the integral over all points so far, not divided by
    /// j_l.
    void LevelIntegral(ZfLmComplexTable& result);

    ZfLmDoubleTable legendreNorm;
    std::int32_t level = 0;
    std::int32_t points = 0;  ///< added up so far
    ZfLmComplexTable sum;     ///< over all of them
    double tolerance = 0.001;
    double lastError = -1.0;  ///< last relative change; negative before the first
    std::int32_t maxLevel = 40;
    std::int32_t lSize = 1;
    const ZfWaveFunction* wave = nullptr;
    ZfExpansionGrid grid;
};
