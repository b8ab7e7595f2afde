#pragma once

#include <string>
#include <vector>

namespace qvre {

/// The crystal in which an element stands at room temperature.
struct ElementCrystal {
    const char* element;
    const char* type;  ///< "fcc", "bcc", "hcp" or "diamond"
    double a;          ///< angstrom
    double c = 0.0;    ///< of hcp

    std::vector<double> Lattice() const;  ///< a, or a and c
};

/// All elements of these four types, by symbol.
const std::vector<ElementCrystal>& ElementCrystals();

/// Null for an element of another type.
const ElementCrystal* FindElementCrystal(const std::string& element);

}  // namespace qvre
