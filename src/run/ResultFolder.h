#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

/// One piece of work of a run, which makes files of the result folder from files and settings.
struct RunStep {
    std::string name;                  ///< shown to the user
    std::string key;                   ///< fingerprint of everything that the outputs depend on
    std::vector<std::string> outputs;  ///< file names in the folder
    /// Leaves its outputs whole or not at all; returns what the user should know, in lines. Throws ZfError.
    std::function<std::string()> make;
};

/// The folder of a run. It remembers which steps are done, with what they depended on and how their files
/// looked, so that the same run goes on where it was stopped and repeats nothing that did not change. One run
/// at a time works in a folder.
class ResultFolder {
public:
    /// Creates the folder. Throws ZfError when it cannot be written or another run works in it.
    explicit ResultFolder(std::string path);
    ResultFolder(const ResultFolder&) = delete;
    ResultFolder& operator=(const ResultFolder&) = delete;
    ~ResultFolder();

    std::string Path(const std::string& name) const { return path_ + "/" + name; }

    /// Whether the step was done with the same key and its files are as it left them.
    bool IsDone(const RunStep& step) const;
    void Remember(const RunStep& step);
    void ForgetAll();

private:
    void TakeLock();
    void RemoveTemporaries() const;
    void ReadRecord();
    void WriteRecord() const;
    std::string Stamps(const RunStep& step) const;

    std::string path_;
    int lock_ = -1;
    std::map<std::string, std::string> done_;  // stamps of the files, by step name and key
};

/// Fingerprint (SHA-256, hexadecimal) of a text, or of the content of a file. Throws ZfError for a file that
/// cannot be read.
std::string FingerprintOf(const std::string& text);
std::string FingerprintOfFile(const std::string& path);
