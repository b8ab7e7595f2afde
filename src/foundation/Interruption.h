#pragma once

#include "foundation/ZfError.h"

namespace qvre {

/// What stops a run that a signal asks to end. On its way up it stays what it is, whatever else a failure is
/// reported as.
struct Interruption : ZfError {
    explicit Interruption(int number)
        : ZfError("interrupted; the same command goes on from here"), signal(number) {}

    int signal;
};

}  // namespace qvre
