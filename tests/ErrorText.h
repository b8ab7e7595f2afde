#pragma once

#include <stdexcept>
#include <string>

#include "foundation/ZfError.h"

using namespace qvre;

/// The message with which an action fails; "no failure" when it does not. Bare texts come after "bare: ".
template <class Action>
std::string ErrorText(Action action) {
    try {
        action();
    } catch (const ZfError& error) {
        return error.message;
    } catch (const char* text) {
        return std::string("bare: ") + text;
    } catch (const std::out_of_range&) {
        return "out of range";
    }
    return "no failure";
}
