#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "app/RunDriver.h"

namespace {

/// Idle threads of the OpenMP runtime spin by default, which on busy cores makes two threads slower than one.
/// The runtime takes its wait policy from the environment before main, so the program starts itself once more
/// with the policy set. A policy of the user's stays; where the restart is not possible, the run goes on as
/// it is.
void RestartWithPassiveWaiting(char** argv) {
    if (std::getenv("OMP_WAIT_POLICY")) return;
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (!failure && setenv("OMP_WAIT_POLICY", "passive", 1) == 0) execv(program.c_str(), argv);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1) RestartWithPassiveWaiting(argv);
    return RunDriver(argc, argv);
}
