#include "foundation/Console.h"

#include <cstdarg>

namespace qvre {

namespace {

std::FILE* progress = stdout;

}  // namespace

void ConsolePrint(const char* format, ...) {
    if (!progress) return;
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(progress, format, arguments);
    va_end(arguments);
}

void ConsoleLine(std::string_view text) {
    if (!progress) return;
    std::fwrite(text.data(), 1, text.size(), progress);
    std::fputc('\n', progress);
    std::fflush(progress);
}

ConsoleRedirection::ConsoleRedirection(std::FILE* stream) : former_(progress) {
    progress = stream;
}

ConsoleRedirection::~ConsoleRedirection() {
    progress = former_;
}

}  // namespace qvre
