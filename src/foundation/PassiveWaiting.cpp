#include <cstdlib>

// Idle threads of the OpenMP runtime spin by default, which on busy cores makes two threads slower than one.
// The runtime takes its policy from the environment before main: this has to run before it, and does where
// the runtime is linked into the program, for constructors of a program run by rising priority.

namespace {

[[gnu::constructor(101)]] void WaitPassively() {
    setenv("OMP_WAIT_POLICY", "passive", 0);  // unless the user has set one
}

}  // namespace
