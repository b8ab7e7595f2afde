#pragma once

#include <string>

#include "xml/ZfBarnXml.h"

/// An element of a document, written out by hand.
inline std::string Tag(const std::string& name, const std::string& value) {
    return "<" + name + ">" + value + "</" + name + ">";
}

/// Reads a text.
struct XmlReader : ZfBarnXml {
    explicit XmlReader(const std::string& text) : ZfBarnXml("r") { Parse(text); }
};
