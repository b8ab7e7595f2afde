#pragma once

#include <string>

#include "report/picture/ColourMap.h"

namespace qvre {

/// The colour in which atoms of an element are usually drawn, after the space-filling models of R. B. Corey,
/// L. Pauling, W. L. Koltun: hydrogen white, carbon grey, nitrogen blue, oxygen red, sulfur yellow; metals as
/// they look or as their salts do. Elements without a habit have colours of their own by atomic number.
Colour ElementColour(const std::string& element);

}  // namespace qvre
