#pragma once

#include <string>

/// A file that appears whole or not at all: it is written under a temporary name in the folder of its target
/// and takes the target's place at Commit. Without a Commit the destructor removes it, and a former file of
/// the target's name stays as it was.
class ReplacedFile {
public:
    /// Throws ZfError when the folder of the target cannot be written. The temporary file keeps the extension
    /// of the target, for writers that choose their format by it.
    explicit ReplacedFile(std::string target);
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;
    ~ReplacedFile();

    const std::string& TemporaryPath() const { return temporary_; }
    void Commit();  ///< throws ZfError; nothing is left then

private:
    std::string target_;
    std::string temporary_;  // empty once committed
};

/// Writes a text as the whole content of a file, which appears whole or not at all. Throws ZfError.
void WriteWholeFile(const std::string& target, const std::string& text);
