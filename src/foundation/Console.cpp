#include "foundation/Console.h"

#include <cstdarg>
#include <cstdio>

void ConsolePrint(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::vprintf(format, arguments);
    va_end(arguments);
}

void ConsoleLine(std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}
