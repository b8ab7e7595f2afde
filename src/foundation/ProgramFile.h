#pragma once

#include <filesystem>
#include <string>

namespace qvre {

/// The file of the running program; empty where the system does not tell.
std::filesystem::path RunningProgram();

/// Path of a table that ships with the programs and stands beside them, such as "AtomicWeight.txt". Throws
/// ZfError when it is not there.
std::string ProgramFile(const std::string& name);

}  // namespace qvre
