#include "run/RunLog.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <cerrno>
#include <ctime>
#include <sstream>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace qvre {

RunLog::RunLog(const std::string& path) : path_(path), file_(std::fopen(path.c_str(), "ae")) {
    if (!file_) throw ZfError("Cannot write " + path_ + ": " + WriteFailureText(errno));
}

void RunLog::Line(const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
    Note(text);
}

void RunLog::Indented(const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) Line("    " + line);
}

void RunLog::IndentedNote(const std::string& lines) {
    std::istringstream stream(lines);
    for (std::string line; std::getline(stream, line);) Note("    " + line);
}

void RunLog::Note(const std::string& text) {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    const std::string stamp = fmt::format("{:%Y-%m-%d %H:%M:%S}", local);
    std::istringstream lines(text);
    std::string stamped;
    for (std::string line; std::getline(lines, line);)
        stamped.append(stamp).append("  ").append(line).append("\n");
    if (std::fwrite(stamped.data(), 1, stamped.size(), file_.get()) != stamped.size() ||
        std::fflush(file_.get()) != 0)
        throw ZfError("Cannot write " + path_ + ": " + WriteFailureText(errno));
}

}  // namespace qvre
