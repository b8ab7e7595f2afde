#pragma once

#include <cstdint>

#include "pattern/ZfSphericalMapping.h"
#include "scattering/ZfVectorFreeElectron.h"

namespace plain {

/// Adds the far field of one record to planes 0 to 3 of the map, pixel by pixel, as ZfDocPattern defines
/// them. `list` is the record's list within the limits, with its mean free path; `orientation` is 3x3; sizes
/// of harmonics as in ZfVectorFreeElectron.
void AddRecord(ZfSphericalMapping& mapping, const ZfLDoubleMatrix& orientation,
               const ZfVectorFreeElectron& list, std::int32_t lOverride);

}  // namespace plain
