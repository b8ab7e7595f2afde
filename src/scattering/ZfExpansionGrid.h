#pragma once

#include <cstdint>
#include <vector>

#include "input/LmTable.h"

/// What a spherical expansion takes from its l size and wave number alone: groups of l values, and for each
/// group the radius of the sphere on which the wave is sampled.
///
/// The radius is where the product of the group's j_l(kr) is highest, so that no member is near a zero of its
/// Bessel function when the projection is divided by it. Products of negative sign never win.
struct ZfExpansionGrid {
    void BuildGrid();              ///< does nothing unless `rebuild` is set
    void SetWaveNumber(double k);  ///< 1/m
    std::int32_t Groups() const { return static_cast<std::int32_t>(groupKr.size()); }

    std::int32_t lSize = 15;
    std::int32_t groupSize = 8;
    bool rebuild = true;
    double waveNumber = 0.0;
    std::vector<double> groupKr;        ///< x = kr of each group
    std::vector<double> groupRadius;    ///< m
    std::vector<double> besselAtGroup;  ///< j_l at the x of l's group, per l
    ZfLmLongTable lOfIndex;
    ZfLmLongTable mOfIndex;
};
