#pragma once

#include <cstdio>
#include <exception>

#include "foundation/ZfError.h"

/// The exit status of a program that does this: 1, with the message on standard error, when it fails.
template <class Action>
int ExitStatus(const Action& action) {
    try {
        action();
        return 0;
    } catch (const ZfError& error) {
        std::fprintf(stderr, "%s\n", error.message.c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
