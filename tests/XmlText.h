#pragma once

#include <string>

/// An element of a document, written out by hand.
inline std::string Tag(const std::string& name, const std::string& value) {
    return "<" + name + ">" + value + "</" + name + ">";
}
