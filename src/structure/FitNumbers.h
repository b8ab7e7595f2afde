#pragma once

#include <string>

namespace qvre {

/// R with four decimals; with six below 0.01, so that it can be told from its level.
std::string RText(double r);

/// With so many decimals; what rounds to 0 has no sign.
std::string FixedText(double value, int decimals);

}  // namespace qvre
