#include "foundation/ReplacedFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <random>
#include <system_error>
#include <utility>

#include "foundation/Interruption.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kPermissions = 0777;
constexpr mode_t kNewFile = 0666;  // less what the user masks
constexpr std::size_t kRandomDigits = 16;

/// ".image.png." of "image.png". Of a name as long as a file system takes it, the beginning has to do, up to
/// the end of a character of UTF-8.
std::string TemporaryStart(const std::string& name) {
    constexpr std::size_t kLongest = 200;
    std::size_t length = std::min(name.size(), kLongest);
    while (length > 0 && length < name.size() && (static_cast<unsigned char>(name[length]) & 0xC0U) == 0x80U)
        --length;
    return fmt::format(".{}.", name.substr(0, length));
}

std::string RandomDigits() {
    std::random_device source;
    return fmt::format("{:08x}{:08x}", source(), source());
}

/// What stands there is an open descriptor of the process: /dev/stdout leads to one.
bool IsInProcessFolder(const fs::path& path) {
    std::error_code failure;
    return fs::canonical(path.parent_path(), failure).string().starts_with("/proc/");
}

/// Empty when the links lead in a circle. Nothing has to be there.
fs::path EndOfLinks(fs::path path) {
    constexpr int kMostLinks = 40;  // as the kernel follows
    for (int i = 0; i <= kMostLinks; ++i) {
        std::error_code failure;
        if (!fs::is_symlink(fs::symlink_status(path, failure)) || IsInProcessFolder(path)) return path;
        path = path.parent_path() / fs::read_symlink(path, failure);
    }
    return {};
}

bool IsDiskFullBehind(const std::string& path) {
    const std::string probe(std::size_t{1} << 16U, '\0');
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    const ssize_t written = write(file, probe.data(), probe.size());
    const bool full = written < 0 ? errno == ENOSPC || errno == EDQUOT : written < std::ssize(probe);
    if (file >= 0) close(file);
    return full;
}

/// Of the failure that is being handled.
std::string CaughtReason() {
    try {
        throw;
    } catch (const ZfError& error) {
        return error.message;
    } catch (const char* text) {
        return text;
    } catch (const std::bad_alloc&) {
        return "there is not enough memory for it";
    } catch (const std::exception& error) {
        return error.what();
    }
}

}  // namespace

ReplacedFile::ReplacedFile(std::string target) : target_(std::move(target)) {
    FindPlace();
    MakeTemporary();
}

ReplacedFile::~ReplacedFile() {
    if (!temporary_.empty()) unlink(temporary_.c_str());
}

void ReplacedFile::FindPlace() {
    if (target_.empty()) Fail("its name is empty");
    const fs::path place = EndOfLinks(target_);
    if (place.empty()) Fail(WriteFailureText(ELOOP));
    place_ = place.string();
    struct stat former = {};
    if (stat(place_.c_str(), &former) != 0) {
        if (errno != ENOENT) Fail(WriteFailureText(errno));
        if (!place.has_filename()) Fail("there is no such folder");
        return;
    }
    if (S_ISDIR(former.st_mode)) Fail(WriteFailureText(EISDIR));
    isPipeOrDevice_ = !S_ISREG(former.st_mode) || IsInProcessFolder(place);
    formerMode_ = isPipeOrDevice_ ? 0 : former.st_mode & kPermissions;
    // The superuser may write everything; a file that nobody may write is meant to stay all the same.
    const bool isProtected = !isPipeOrDevice_ && (formerMode_ & 0222U) == 0;
    if (isProtected || access(place_.c_str(), W_OK) != 0) Fail("it is write-protected");
}

void ReplacedFile::MakeTemporary() {
    const fs::path place = place_;
    const fs::path folder = isPipeOrDevice_ ? fs::temp_directory_path() : place.parent_path();
    const std::string start = (folder / TemporaryStart(place.filename().string())).string();
    int file = -1;
    std::string name;
    do {
        name = start + RandomDigits();
        file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                    formerMode_ != 0  ? formerMode_
                    : isPipeOrDevice_ ? 0600U
                                      : kNewFile);
    } while (file < 0 && errno == EEXIST);
    if (file < 0 && errno == ENOENT) Fail("there is no folder " + folder.string());
    if (file < 0 && errno == EACCES) Fail("its folder may not be written");
    if (file < 0) Fail(WriteFailureText(errno));
    temporary_ = name;
    struct stat former = {};
    if (formerMode_ != 0 && stat(place_.c_str(), &former) == 0) {
        // An owner that cannot be kept is no reason to refuse.
        [[maybe_unused]] const int kept = fchown(file, former.st_uid, former.st_gid);
        fchmod(file, formerMode_);
    }
    close(file);
}

void ReplacedFile::Write(const std::function<void(const std::string& path)>& write) {
    try {
        write(temporary_);
    } catch (const Interruption&) {
        throw;
    } catch (...) {
        std::string reason = CaughtReason();
        if (IsDiskFullBehind(temporary_)) Fail(WriteFailureText(ENOSPC));
        const std::size_t name = reason.find(temporary_);
        if (name != std::string::npos) reason.replace(name, temporary_.size(), target_);
        Fail(reason);
    }
}

void ReplacedFile::WriteText(const std::string& text) {
    Write([&text](const std::string& path) {
        errno = 0;
        std::ofstream stream(path, std::ios::binary);
        stream.write(text.data(), static_cast<std::streamsize>(text.size()));
        stream.close();
        if (!stream) throw ZfError(WriteFailureText(errno));
    });
}

void ReplacedFile::Commit() {
    if (isPipeOrDevice_) {
        CopyIntoPlace();
        unlink(temporary_.c_str());
    } else if (std::rename(temporary_.c_str(), place_.c_str()) != 0) {
        Fail(WriteFailureText(errno));
    }
    temporary_.clear();
}

void ReplacedFile::CopyIntoPlace() const {
    std::error_code failure;
    if (fs::file_size(temporary_, failure) == 0) return;
    std::ifstream content(temporary_, std::ios::binary);
    errno = 0;
    // Where standard output goes to a file, what is printed before and after stays.
    std::ofstream stream(place_, std::ios::binary | std::ios::app);
    stream << content.rdbuf();
    stream.close();
    if (!stream) Fail(WriteFailureText(errno));
}

void ReplacedFile::Fail(const std::string& reason) const {
    throw ZfError(fmt::format("Cannot write {}: {}", target_, reason));
}

std::string WriteFailureText(int reason) {
    if (reason == ENOSPC || reason == EDQUOT) return "the disk is full";
    if (reason == ELOOP) return "its links lead in a circle";
    if (reason == EISDIR) return "it is a folder";
    return std::generic_category().message(reason);
}

void WriteWholeFile(const std::string& target, const std::string& text) {
    ReplacedFile file(target);
    file.WriteText(text);
    file.Commit();
}

bool IsTemporaryOf(const std::string& name, const std::string& target) {
    const std::string start = TemporaryStart(target);
    return name.size() == start.size() + kRandomDigits && name.starts_with(start) &&
           name.find_first_not_of("0123456789abcdef", start.size()) == std::string::npos;
}

}  // namespace qvre
