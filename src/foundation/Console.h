#pragma once

#include <string_view>

/// Progress goes to standard output through C formatted output alone, so no two channels can reorder.
/// A progress message carries its own "\n". Worker threads do not print.
[[gnu::format(printf, 1, 2)]] void ConsolePrint(const char* format, ...);

/// Writes the text and a line end, and flushes, so that a user who follows a long run sees where it stands.
void ConsoleLine(std::string_view text);
