#include "foundation/ReplacedFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "foundation/ZfError.h"

namespace {

namespace fs = std::filesystem;

/// Hidden, beside the target and unique to the process: "image.png" becomes ".image.4711.png".
std::string TemporaryName(const fs::path& target) {
    std::string name = ".";
    name += target.stem().string() + "." + std::to_string(getpid()) + target.extension().string();
    return (target.parent_path() / name).string();
}

}  // namespace

ReplacedFile::ReplacedFile(std::string target) : target_(std::move(target)) {
    if (fs::is_directory(target_)) throw ZfError("Cannot write " + target_ + ": it is a folder");
    temporary_ = TemporaryName(target_);
    const int descriptor = open(temporary_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor < 0) throw ZfError("Cannot write " + target_ + ": " + std::strerror(errno));
    close(descriptor);
}

ReplacedFile::~ReplacedFile() {
    std::error_code ignored;
    if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void ReplacedFile::Commit() {
    std::error_code failure;
    fs::rename(temporary_, target_, failure);
    if (failure) throw ZfError("Cannot write " + target_ + ": " + failure.message());
    temporary_.clear();
}

void WriteWholeFile(const std::string& target, const std::string& text) {
    ReplacedFile file(target);
    std::ofstream stream(file.TemporaryPath(), std::ios::binary);
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
    stream.close();
    if (!stream) throw ZfError("Cannot write " + target + ": the disk may be full");
    file.Commit();
}
