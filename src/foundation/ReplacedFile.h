#pragma once

#include <functional>
#include <string>

namespace qvre {

/// A file that appears whole or not at all: it is written under a temporary name in the folder of its target
/// and takes the target's place at Commit. Without a Commit the destructor removes it, and a former file of
/// the target's name stays as it was; otherwise it hands on its mode and owner. Where the name is a symbolic
/// link, the file at its end is replaced. A pipe or a device stays: at Commit the content goes into it.
///
/// All failures are ZfError "Cannot write <target>: <reason>".
class ReplacedFile {
public:
    /// Throws for a folder, a file that may not be written, links in a circle, a folder of the target that is
    /// missing or may not be written.
    explicit ReplacedFile(std::string target);
    ReplacedFile(const ReplacedFile&) = delete;
    ReplacedFile& operator=(const ReplacedFile&) = delete;
    ~ReplacedFile();

    /// Calls `write` with the path of the temporary file. When it fails, the reason is a full disk if there
    /// is one, and what it threw otherwise; an Interruption passes.
    void Write(const std::function<void(const std::string& path)>& write);
    void WriteText(const std::string& text);

    void Commit();  ///< nothing is left when it throws

private:
    void FindPlace();
    void MakeTemporary();
    void CopyIntoPlace() const;
    [[noreturn]] void Fail(const std::string& reason) const;

    std::string target_;       // as the user named it
    std::string place_;        // the end of its links
    unsigned formerMode_ = 0;  // of the file to be replaced; 0 without one
    bool isPipeOrDevice_ = false;
    std::string temporary_;  // empty once committed
};

/// Why a file cannot be written, in words, by the errno of the failure.
std::string WriteFailureText(int reason);

/// Writes a text as the whole content of a file, which appears whole or not at all. Throws as ReplacedFile
/// does.
void WriteWholeFile(const std::string& target, const std::string& text);

/// Whether a file of this name is what a program that was killed has left of an output; both without folders.
bool IsTemporaryOf(const std::string& name, const std::string& target);

}  // namespace qvre
