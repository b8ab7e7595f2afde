#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// One element of a document. Racks live in the pool of their document and are chained to parent, siblings
/// and children, so that a consumed rack leaves the tree in one step and no depth of nesting needs recursion.
///
/// A rack that was read holds positions in the document text only; a rack to be written holds its texts.
struct ZfBarnXmlRack {
    static constexpr std::size_t kNoPosition = static_cast<std::size_t>(-1);

    void Append(ZfBarnXmlRack& child);
    void Remove(ZfBarnXmlRack& child);

    ZfBarnXmlRack* parent = nullptr;
    ZfBarnXmlRack* firstChild = nullptr;
    ZfBarnXmlRack* lastChild = nullptr;
    ZfBarnXmlRack* previous = nullptr;
    ZfBarnXmlRack* next = nullptr;

    std::string_view name;  ///< in the document text, or in ownName
    std::string ownName;
    std::string value;  ///< text to write; empty in a rack that was read

    std::size_t startEnd = kNoPosition;  ///< of the ">" of the start tag
    std::size_t close = kNoPosition;     ///< of the "<" of the close tag; none while the element is open
};
