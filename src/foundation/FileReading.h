#pragma once

#include <string>

namespace qvre {

/// The bytes of a file, pipes included. Throws ZfError "path: reason".
std::string ReadWholeFile(const std::string& path);

/// The text of a file as UTF-8, without a byte order mark; UTF-16 that begins with its mark is converted.
/// Throws ZfError "path: reason", also for a zero byte, which no text holds: what is none is not taken for a
/// single line of gigabytes.
std::string ReadTextFile(const std::string& path);

/// Throws ZfError "path: there is no such file", and likewise for a folder or a file that may not be read.
void RequireFile(const std::string& path);

/// Throws what is being handled again as ZfError "path: reason": a ZfError, a bare text, a failure of the
/// standard library. A reason that names the path already stays as it is.
[[noreturn]] void RethrowNaming(const std::string& path);

/// What `read` returns. Its failures name the file that it reads.
template <class Reader>
auto Naming(const std::string& path, const Reader& read) {
    try {
        return read();
    } catch (...) {
        RethrowNaming(path);
    }
}

}  // namespace qvre
