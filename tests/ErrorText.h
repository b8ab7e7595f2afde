#pragma once

#include <string>

#include "foundation/ZfError.h"

/// The message with which an action fails; "no failure" when it does not.
template <class Action>
std::string ErrorText(Action action) {
    try {
        action();
    } catch (const ZfError& error) {
        return error.message;
    }
    return "no failure";
}
