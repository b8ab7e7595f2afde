#pragma once

#include <cstdio>
#include <string_view>

namespace qvre {

/// Progress goes to standard output through C formatted output alone, so no two channels can reorder.
/// A progress message carries its own "\n". Worker threads do not print.
[[gnu::format(printf, 1, 2)]] void ConsolePrint(const char* format, ...);

/// Writes the text and a line end, and flushes, so that a user who follows a long run sees where it stands.
void ConsoleLine(std::string_view text);

/// While it lives, progress goes to another stream, such as a log; a null stream swallows it.
class ConsoleRedirection {
public:
    explicit ConsoleRedirection(std::FILE* stream);
    ConsoleRedirection(const ConsoleRedirection&) = delete;
    ConsoleRedirection& operator=(const ConsoleRedirection&) = delete;
    ~ConsoleRedirection();

private:
    std::FILE* former_;
};

}  // namespace qvre
