#pragma once

#include <cstdint>

#include "input/LmTable.h"
#include "scattering/ZfWaveFunction.h"

/// The calculation as its formulas are written: one source at one point at a time, every table made anew
/// where it is needed. Slow and obvious: what the fast kernels are compared with.
namespace plain {

struct Expansion {
    ZfLmComplexTable coefficients;  ///< c(l,m) of psi(r) = sum_lm c(l,m) j_l(kr) Y_lm
    std::int32_t level = 0;         ///< final level of the nested grid
};

/// The expansion of ZfSphereExpansion, with the same levels and the same points. Throws ZfError if the wave
/// is not finite.
Expansion Expand(const ZfWaveFunction& wave, std::int32_t lSize, double tolerance);

}  // namespace plain
