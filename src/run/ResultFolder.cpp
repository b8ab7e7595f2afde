#include "run/ResultFolder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCryptographicHash>
#include <QFile>
#include <QString>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kRecordName = ".steps";
constexpr const char* kLockName = ".lock";

/// Size and time of a file, which tell whether it is the one that a step has left; empty without a file.
std::string StampOf(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return std::to_string(status.st_size) + ":" + std::to_string(status.st_mtim.tv_sec) + "." +
           std::to_string(status.st_mtim.tv_nsec);
}

/// ".name.4711.ext" is what a writer that was killed leaves behind.
bool IsTemporary(const fs::path& path) {
    const std::string stem = path.stem().string();
    const std::size_t dot = stem.find_last_of('.');
    if (stem.empty() || stem.front() != '.' || dot == 0 || dot == std::string::npos || dot + 1 == stem.size())
        return false;
    for (std::size_t i = dot + 1; i < stem.size(); ++i)
        if (!std::isdigit(static_cast<unsigned char>(stem[i]))) return false;
    return true;
}

std::string RecordKey(const RunStep& step) {
    return step.name + "\t" + step.key;
}

}  // namespace

ResultFolder::ResultFolder(std::string path) : path_(std::move(path)) {
    std::error_code failure;
    fs::create_directories(path_, failure);
    if (failure) throw ZfError("Cannot make the result folder " + path_ + ": " + failure.message());
    TakeLock();
    RemoveTemporaries();
    ReadRecord();
}

ResultFolder::~ResultFolder() {
    if (lock_ >= 0) close(lock_);
}

void ResultFolder::TakeLock() {
    lock_ = open(Path(kLockName).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock_ < 0) throw ZfError("Cannot write into the result folder " + path_);
    if (flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
    close(lock_);
    throw ZfError("Another run works in the folder " + path_ + "; wait for it, or choose another folder");
}

void ResultFolder::RemoveTemporaries() const {
    std::error_code ignored;
    for (const fs::directory_entry& entry : fs::directory_iterator(path_))
        if (IsTemporary(entry.path())) fs::remove(entry.path(), ignored);
}

void ResultFolder::ReadRecord() {
    std::ifstream stream(Path(kRecordName));
    for (std::string line; std::getline(stream, line);) {
        const std::size_t split = line.find_last_of('\t');
        if (split != std::string::npos) done_[line.substr(0, split)] = line.substr(split + 1);
    }
}

void ResultFolder::WriteRecord() const {
    std::string text;
    for (const auto& [key, stamps] : done_) text.append(key).append("\t").append(stamps).append("\n");
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

std::string FingerprintOf(const std::string& text) {
    const QByteArray bytes = QByteArray::fromStdString(text);
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

std::string FingerprintOfFile(const std::string& path) {
    QFile file(QString::fromStdString(path));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw ZfError("Cannot read the file " + path);
    return hash.result().toHex().toStdString();
}
