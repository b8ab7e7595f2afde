#include "foundation/ProgramFile.h"

#include <system_error>

#include "foundation/ZfError.h"

namespace qvre {

std::filesystem::path RunningProgram() {
    std::error_code failure;
    const std::filesystem::path running = std::filesystem::read_symlink("/proc/self/exe", failure);
    return failure ? std::filesystem::path() : running;
}

std::string ProgramFile(const std::string& name) {
    const std::filesystem::path running = RunningProgram();
    const std::filesystem::path beside = running.parent_path() / name;
    std::error_code failure;
    if (running.empty() || !std::filesystem::exists(beside, failure))
        throw ZfError("The table " + name + " is missing; it has to stand beside the program, as " +
                      beside.string());
    return beside.string();
}

}  // namespace qvre
