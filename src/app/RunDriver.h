#pragma once

namespace qvre {

/// One run of the program; returns its exit status, 0 or -1. Failures are reported on standard output, or end
/// the run silently when they are no ZfError.
int RunDriver(int argumentCount, const char* const* arguments);

}  // namespace qvre
