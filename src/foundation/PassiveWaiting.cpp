#include "foundation/PassiveWaiting.h"

#include <omp.h>
#include <unistd.h>

#include <cstdlib>

#include "foundation/ProgramFile.h"

void RestartWithPassiveWaiting(char** argv) {
    if (omp_get_max_threads() == 1 || std::getenv("OMP_WAIT_POLICY")) return;
    const std::filesystem::path program = RunningProgram();
    if (!program.empty() && setenv("OMP_WAIT_POLICY", "passive", 1) == 0) execv(program.c_str(), argv);
}
