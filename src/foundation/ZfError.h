#pragma once

#include <stdexcept>
#include <string>
#include <utility>

/// The one exception type of the system: a fixed English text that the program prints as "Error: <message>".
/// A layer that knows where a failure happened appends "/" and the place, and throws it again.
///
/// A few low-level routines throw a bare text (const char*) instead; such a failure, like an out-of-range
/// access of a container, ends the program without a message.
struct ZfError {
    explicit ZfError(std::string text) : message(std::move(text)) {}

    std::string message;
};

namespace qvre {

[[noreturn]] inline void ThrowInvalidSubscript() {
    throw std::out_of_range("invalid vector<T> subscript");
}

/// The element at `index`, or an out-of-range failure.
template <class Container, class Index>
auto& CheckedAt(Container& container, Index index) {
    if (index < 0 || static_cast<std::size_t>(index) >= container.size()) ThrowInvalidSubscript();
    return container[static_cast<std::size_t>(index)];
}

}  // namespace qvre
