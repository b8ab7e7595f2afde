#pragma once

namespace qvre {

/// Runs `qvre` with its arguments, the program's name among them, and returns the exit status: 0 done, 1
/// failed, 2 bad usage, 128 and its number a signal that stopped it. What went wrong stands on standard
/// error.
int RunProgram(int argumentCount, const char* const* arguments);

}  // namespace qvre
