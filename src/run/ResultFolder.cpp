#include "run/ResultFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>
#include <utility>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

constexpr const char* kRecordName = ".steps";
constexpr const char* kLockName = ".lock";
constexpr const char* kStale = "stale";

/// Size and time of a file, which tell whether it is the one that a step has left; empty without a file.
std::string StampOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return std::to_string(status.st_size) + ":" + std::to_string(status.st_mtim.tv_sec) + "." +
           std::to_string(status.st_mtim.tv_nsec);
}

/// Names and stamps of the files of a step, out of "name=stamp;name=stamp;".
std::map<std::string, std::string> FilesOf(const std::string& stamps) {
    std::map<std::string, std::string> files;
    std::istringstream stream(stamps);
    for (std::string entry; std::getline(stream, entry, ';');) {
        const std::size_t equals = entry.find_last_of('=');
        if (equals != std::string::npos) files[entry.substr(0, equals)] = entry.substr(equals + 1);
    }
    return files;
}

std::string RecordKey(const RunStep& step) {
    return step.name + "\t" + step.key;
}

}  // namespace

ResultFolder::ResultFolder(std::string path) : path_(std::move(path)) {
    std::error_code failure;
    fs::create_directories(path_, failure);
    if (failure)
        throw ZfError("Cannot make the result folder " + path_ + ": " + WriteFailureText(failure.value()));
    TakeLock();
    ReadRecord();
}

ResultFolder::~ResultFolder() {
    if (lock_ >= 0) close(lock_);
}

void ResultFolder::TakeLock() {
    lock_ = open(Path(kLockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock_ < 0)
        throw ZfError("Cannot write into the result folder " + path_ + ": " + WriteFailureText(errno));
    if (flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
    close(lock_);
    throw ZfError("Another run works in the folder " + path_ + "; wait for it, or choose another folder");
}

void ResultFolder::RemoveTemporaries(const std::vector<std::string>& outputs) const {
    const auto isTemporary = [&](const std::string& name) {
        return IsTemporaryOf(name, kRecordName) ||
               std::any_of(outputs.begin(), outputs.end(),
                           [&](const std::string& output) { return IsTemporaryOf(name, output); });
    };
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_, failure))
        if (entry.symlink_status(failure).type() == fs::file_type::regular &&
            isTemporary(entry.path().filename().string()))
            fs::remove(entry.path(), failure);
}

std::vector<std::string> ResultFolder::NewlyStale(const std::vector<std::string>& outputs) {
    std::set<std::string> stale;
    for (const auto& [key, stamps] : done_)
        for (const auto& [name, stamp] : FilesOf(stamps))
            if (stamp == StampOf(Path(name))) stale.insert(name);
    for (const std::string& output : outputs) stale.erase(output);
    std::vector<std::string> news;
    std::set_difference(stale.begin(), stale.end(), toldStale_.begin(), toldStale_.end(),
                        std::back_inserter(news));
    toldStale_ = std::move(stale);
    WriteRecord();
    return news;
}

/// A line for each step: its name, its key and the stamps of its files; one for each file that was told to be
/// stale.
void ResultFolder::ReadRecord() {
    std::ifstream stream(Path(kRecordName));
    for (std::string line; std::getline(stream, line);) {
        const std::size_t split = line.find_last_of('\t');
        if (split == std::string::npos) continue;
        if (line.substr(0, split) == kStale)
            toldStale_.insert(line.substr(split + 1));
        else
            done_[line.substr(0, split)] = line.substr(split + 1);
    }
}

void ResultFolder::WriteRecord() const {
    std::string text;
    for (const auto& [key, stamps] : done_) text.append(key).append("\t").append(stamps).append("\n");
    for (const std::string& name : toldStale_) text.append(kStale).append("\t").append(name).append("\n");
    WriteWholeFile(Path(kRecordName), text);
}

std::string ResultFolder::Stamps(const RunStep& step) const {
    std::string stamps;
    for (const std::string& name : step.outputs) {
        const std::string stamp = StampOf(Path(name));
        if (stamp.empty()) return {};
        stamps.append(name).append("=").append(stamp).append(";");
    }
    return stamps;
}

bool ResultFolder::IsDone(const RunStep& step) const {
    const auto found = done_.find(RecordKey(step));
    if (found == done_.end()) return false;
    const std::string stamps = Stamps(step);
    return found->second == stamps && (!stamps.empty() || step.outputs.empty());
}

void ResultFolder::Remember(const RunStep& step) {
    done_[RecordKey(step)] = Stamps(step);
    WriteRecord();
}

void ResultFolder::ForgetAll() {
    done_.clear();
    WriteRecord();
}

}  // namespace qvre
