#include "xml/ZfBarnFile.h"

#include <limits>
#include <new>
#include <utility>
#include <vector>

#include "foundation/ZfError.h"

namespace {

constexpr std::size_t kWriteBuffer = 1U << 18U;

}  // namespace

ZfBarnFile::ZfBarnFile(std::string path, const std::string& mode) : ZfBarnXml(mode), path_(std::move(path)) {
    if (IsWriting()) {
        file_.reset(std::fopen(path_.c_str(), "w"));
        if (!file_) throw ZfError("Cannot File Open " + path_);
        return;
    }
    statusText = "Loading....";
    status = kLoading;
    std::string text = ReadText();
    statusText = "Analyzing....";
    status = kAnalyzing;
    Parse(std::move(text));
    status = kReady;
}

ZfBarnFile::~ZfBarnFile() {
    if (!file_) return;
    try {
        Save();
    } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    }
}

/// The file up to its first zero byte.
std::string ZfBarnFile::ReadText() {
    const File file(std::fopen(path_.c_str(), "r"));
    if (!file) throw ZfError(path_ + ": Cannot File Open");
    std::string text;
    try {
        std::fseek(file.get(), 0, SEEK_END);
        const long length = std::ftell(file.get());
        std::rewind(file.get());
        // A directory opens too, and tells an endless length.
        if (length < 0 || length == std::numeric_limits<long>::max()) throw std::bad_alloc();
        text.resize(static_cast<std::size_t>(length));
    } catch (const std::bad_alloc&) {
        throw ZfError("Cannot get the temp memory for xml loading");
    }
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    const std::size_t zero = text.find('\0');
    if (zero != std::string::npos) text.resize(zero);
    return text;
}

void ZfBarnFile::Save() {
    std::vector<char> buffer(kWriteBuffer);
    File file = std::move(file_);  // closed before its buffer goes
    std::setvbuf(file.get(), buffer.data(), _IOFBF, buffer.size());
    bool written = true;
    WriteDocument([&](std::string_view piece) {
        written = std::fwrite(piece.data(), 1, piece.size(), file.get()) == piece.size() && written;
    });
    const bool closed = std::fclose(file.release()) == 0;
    if (!written || !closed) throw ZfError("Cannot File Write " + path_);
}
