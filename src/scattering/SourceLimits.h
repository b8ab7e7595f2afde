#pragma once

#include "scattering/ZfFreeElectron.h"

namespace qvre {

/// Which atoms of a cluster take part in an image. Lengths in m; 0: no limit.
struct SourceLimits {
    double largest = 0.0;   ///< distance from the emitter; atoms at it and beyond are left out
    double depth = 0.0;     ///< atoms above this z are left out
    double smallest = 0.0;  ///< distance from the emitter; atoms at it and below are left out

    /// The emitter, which stands at the origin, is never left out by the two limits of the distance.
    bool LeaveOut(const ZfFreeElectron& source) const;
};

}  // namespace qvre
