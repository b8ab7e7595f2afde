#include "prepare/cluster/ElementCrystals.h"

#include <algorithm>

// Lattice constants at 25 degrees Celsius: H. W. King, Crystal structures of the elements at 25 C, Bull.
// Alloy Phase Diagrams 2, 401 (1981), and the table after him in the CRC Handbook of Chemistry and Physics,
// section 12. Those of Cu, Si and Ge are a little rounded, as are those of the ready crystals of the same
// names.

namespace qvre {

std::vector<double> ElementCrystal::Lattice() const {
    return c > 0.0 ? std::vector<double>{a, c} : std::vector<double>{a};
}

const std::vector<ElementCrystal>& ElementCrystals() {
    static const std::vector<ElementCrystal> crystals = {
        {"Ac", "fcc", 5.311},          {"Ag", "fcc", 4.0857},         {"Al", "fcc", 4.0496},
        {"Au", "fcc", 4.0782},         {"Ba", "bcc", 5.023},          {"Be", "hcp", 2.2859, 3.5845},
        {"Ca", "fcc", 5.5884},         {"Cd", "hcp", 2.9793, 5.6181}, {"Ce", "fcc", 5.1610},
        {"Co", "hcp", 2.5071, 4.0694}, {"Cr", "bcc", 2.8848},         {"Cs", "bcc", 6.141},
        {"Cu", "fcc", 3.61},           {"Dy", "hcp", 3.5915, 5.6501}, {"Er", "hcp", 3.5592, 5.5850},
        {"Eu", "bcc", 4.5827},         {"Fe", "bcc", 2.8665},         {"Gd", "hcp", 3.6336, 5.7810},
        {"Ge", "diamond", 5.658},      {"Hf", "hcp", 3.1946, 5.0511}, {"Ho", "hcp", 3.5778, 5.6178},
        {"Ir", "fcc", 3.8392},         {"K", "bcc", 5.321},           {"Li", "bcc", 3.5093},
        {"Lu", "hcp", 3.5052, 5.5494}, {"Mg", "hcp", 3.2094, 5.2107}, {"Mo", "bcc", 3.1470},
        {"Na", "bcc", 4.2906},         {"Nb", "bcc", 3.3004},         {"Ni", "fcc", 3.5240},
        {"Os", "hcp", 2.7341, 4.3198}, {"Pb", "fcc", 4.9502},         {"Pd", "fcc", 3.8901},
        {"Pt", "fcc", 3.9236},         {"Ra", "bcc", 5.148},          {"Rb", "bcc", 5.705},
        {"Re", "hcp", 2.7609, 4.4576}, {"Rh", "fcc", 3.8032},         {"Ru", "hcp", 2.7058, 4.2816},
        {"Sc", "hcp", 3.3088, 5.2680}, {"Si", "diamond", 5.43},       {"Sr", "fcc", 6.0849},
        {"Ta", "bcc", 3.3030},         {"Tb", "hcp", 3.6055, 5.6966}, {"Tc", "hcp", 2.738, 4.393},
        {"Th", "fcc", 5.0842},         {"Ti", "hcp", 2.9503, 4.6836}, {"Tl", "hcp", 3.4566, 5.5248},
        {"Tm", "hcp", 3.5375, 5.5540}, {"V", "bcc", 3.0240},          {"W", "bcc", 3.1652},
        {"Y", "hcp", 3.6482, 5.7318},  {"Yb", "fcc", 5.4848},         {"Zn", "hcp", 2.6650, 4.9470},
        {"Zr", "hcp", 3.2316, 5.1475}};
    return crystals;
}

const ElementCrystal* FindElementCrystal(const std::string& element) {
    const auto& all = ElementCrystals();
    const auto found = std::find_if(
        all.begin(), all.end(), [&](const ElementCrystal& crystal) { return element == crystal.element; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace qvre
