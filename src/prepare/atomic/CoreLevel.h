#pragma once

#include <string>

namespace qvre {

/// A level of an atom, 1s to 4f, and with j one line of its spin-orbit pair.
struct CoreLevel {
    std::string Name() const;  ///< "2p" or "2p3/2"

    int n = 0;
    int l = 0;
    int twiceJ = 0;  ///< 2j; 0 stands for both lines
};

/// Reads "2p" or "2p3/2". The one line of an s level needs no j. Throws ZfError for anything else.
CoreLevel ParseCoreLevel(const std::string& text);

}  // namespace qvre
