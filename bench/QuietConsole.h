#pragma once

/// Sends standard output to /dev/null while it lives: the calculators report every atom.
class QuietConsole {
public:
    QuietConsole();
    QuietConsole(const QuietConsole&) = delete;
    QuietConsole& operator=(const QuietConsole&) = delete;
    ~QuietConsole();

private:
    int saved_;
};
