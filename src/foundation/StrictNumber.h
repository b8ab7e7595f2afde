#pragma once

#include <string>

namespace qvre {

/// The number that a text consists of, to its last character, and finite. Throws ZfError "`what`: "abc" is no
/// number" otherwise.
double StrictNumber(const std::string& text, const std::string& what);

}  // namespace qvre
