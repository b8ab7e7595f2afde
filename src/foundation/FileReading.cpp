#include "foundation/FileReading.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QTextStream>
#include <array>
#include <cerrno>
#include <exception>
#include <memory>
#include <new>
#include <system_error>

#include "foundation/Interruption.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

[[noreturn]] void Fail(const std::string& path, int reason) {
    if (reason == ENOENT || reason == ENOTDIR) throw ZfError(path + ": there is no such file");
    if (reason == EACCES || reason == EPERM) throw ZfError(path + ": it may not be read");
    if (reason == EISDIR) throw ZfError(path + ": it is a folder");
    if (reason == ELOOP) throw ZfError(path + ": its links lead in a circle");
    throw ZfError(path + ": it cannot be read (" + std::generic_category().message(reason) + ")");
}

/// An open file, closed at the end of its life.
struct Descriptor {
    explicit Descriptor(const std::string& path) : number(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        if (number < 0) Fail(path, errno);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(number); }

    int number;
};

std::string ReadAll(const std::string& path) {
    const Descriptor file(path);
    std::string bytes;
    struct stat status = {};
    if (fstat(file.number, &status) == 0 && S_ISREG(status.st_mode))
        bytes.reserve(static_cast<std::size_t>(status.st_size));
    constexpr std::size_t kBlock = std::size_t{1} << 16U;
    const auto block = std::make_unique<std::array<char, kBlock>>();
    for (;;) {
        const ssize_t count = read(file.number, block->data(), block->size());
        if (count == 0) return bytes;
        if (count > 0)
            bytes.append(block->data(), static_cast<std::size_t>(count));
        else if (errno != EINTR)
            Fail(path, errno);
    }
}

}  // namespace

std::string ReadWholeFile(const std::string& path) {
    return Naming(path, [&] { return ReadAll(path); });
}

std::string ReadTextFile(const std::string& path) {
    std::string text = ReadWholeFile(path);
    const bool isUtf16 = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
    if (!isUtf16 && text.find('\0') != std::string::npos) throw ZfError(path + ": it is no text");
    if (text.starts_with("\xEF\xBB\xBF")) return text.substr(3);
    if (!isUtf16) return text;
    return QTextStream(QByteArray::fromStdString(text)).readAll().toStdString();
}

void RequireFile(const std::string& path) {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) Fail(path, errno);
    if (S_ISDIR(status.st_mode)) Fail(path, EISDIR);
    if (access(path.c_str(), R_OK) != 0) Fail(path, errno);
}

void RethrowNaming(const std::string& path) {
    const std::string place = path + ": ";
    try {
        throw;
    } catch (const Interruption&) {
        throw;
    } catch (const ZfError& error) {
        throw ZfError(error.message.starts_with(place) ? error.message : place + error.message);
    } catch (const char* text) {
        throw ZfError(place + text);
    } catch (const std::bad_alloc&) {
        throw ZfError(place + "there is not enough memory for it");
    } catch (const std::exception& error) {
        throw ZfError(place + "it is damaged (" + error.what() + ")");
    }
}

}  // namespace qvre
