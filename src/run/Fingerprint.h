#pragma once

#include <string>

namespace qvre {

/// Fingerprint (SHA-256, hexadecimal) of a text, or of the content of a file. Throws ZfError for a file that
/// cannot be read.
std::string FingerprintOf(const std::string& text);
std::string FingerprintOfFile(const std::string& path);

}  // namespace qvre
