#include "QuietConsole.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

QuietConsole::QuietConsole() {
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
}

QuietConsole::~QuietConsole() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
}
