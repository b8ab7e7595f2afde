#pragma once

namespace qvre {

/// Opens the null device on those of the descriptors 0, 1 and 2 that the caller of the program has closed;
/// call it first in main. The next file to be opened would otherwise take their place, and progress or errors
/// would be written into it.
void OpenClosedStandardStreams();

}  // namespace qvre
