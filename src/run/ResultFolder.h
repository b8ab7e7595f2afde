#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "run/RunPlan.h"

namespace qvre {

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

    /// Removes what a run that was killed left of these outputs.
    void RemoveTemporaries(const std::vector<std::string>& outputs) const;
    /// Files of remembered steps that are still as these left them, but are none of the outputs. Each is told
    /// once, until it is an output again.
    std::vector<std::string> NewlyStale(const std::vector<std::string>& outputs);

private:
    void TakeLock();
    void ReadRecord();
    void WriteRecord() const;
    std::string Stamps(const RunStep& step) const;

    std::string path_;
    int lock_ = -1;
    std::map<std::string, std::string> done_;  // stamps of the files, by step name and key
    std::set<std::string> toldStale_;
};

}  // namespace qvre
