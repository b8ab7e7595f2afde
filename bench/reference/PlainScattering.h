#pragma once

#include <cstdint>
#include <vector>

#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ZfScatteringData.h"

using namespace qvre;

namespace plain {

/// The waves of one pass; entry 0 is the emitter.
struct Scattering {
    std::vector<ZfLmComplexTable> tables;  ///< of h1_l; the emitter's is zero, as before the end of a pass
    std::vector<std::int32_t> levels;      ///< final level of each expansion; 0 for the emitter
};

/// One pass over the atoms of a record as AddScatteringRecord leaves it, by kMulti or kSlowMulti.
Scattering Scatter(const ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                   ScatteringMethod method, double tolerance);

}  // namespace plain
