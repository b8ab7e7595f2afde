#include "foundation/ProgramFile.h"

#include <filesystem>
#include <system_error>

#include "foundation/ZfError.h"

std::string ProgramFile(const std::string& name) {
    namespace fs = std::filesystem;
    std::error_code failure;
    const fs::path running = fs::read_symlink("/proc/self/exe", failure);
    const fs::path beside = running.parent_path() / name;
    if (failure || !fs::exists(beside, failure))
        throw ZfError("The table " + name + " is missing; it has to stand beside the program, as " +
                      beside.string());
    return beside.string();
}
