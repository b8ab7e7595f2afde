#pragma once

#include <string>

/// Path of a table that ships with the programs and stands beside them, such as "AtomicWeight.txt". Throws
/// ZfError when it is not there.
std::string ProgramFile(const std::string& name);
