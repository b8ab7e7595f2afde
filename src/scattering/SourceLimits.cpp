#include "scattering/SourceLimits.h"

namespace qvre {

namespace {

constexpr double kAtEmitterSquared_m2 = 1e-22;

}  // namespace

bool SourceLimits::LeaveOut(const ZfFreeElectron& source) const {
    const double q = NormSquared(source.position);
    const double upper = largest * largest;
    const double lower = smallest * smallest;
    if (upper > 0 && q >= upper) return true;
    if (depth > 0 && source.position.VectorValueAt(2) > depth) return true;
    return q > kAtEmitterSquared_m2 && lower >= q;
}

}  // namespace qvre
