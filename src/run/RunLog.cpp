#include "run/RunLog.h"

#include <ctime>
#include <sstream>

#include "foundation/ZfError.h"

RunLog::RunLog(const std::string& path) : file_(std::fopen(path.c_str(), "a")) {
    if (!file_) throw ZfError("Cannot write " + path);
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

void RunLog::Note(const std::string& text) {
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", &local);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        std::fprintf(file_.get(), "%s  %s\n", stamp, line.c_str());
    std::fflush(file_.get());
}
