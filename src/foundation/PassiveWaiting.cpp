#include "foundation/PassiveWaiting.h"

#include <omp.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

void RestartWithPassiveWaiting(char** argv) {
    if (omp_get_max_threads() == 1 || std::getenv("OMP_WAIT_POLICY")) return;
    std::error_code failure;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failure);
    if (!failure && setenv("OMP_WAIT_POLICY", "passive", 1) == 0) execv(program.c_str(), argv);
}
