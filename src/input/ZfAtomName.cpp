#include "input/ZfAtomName.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "foundation/ZfError.h"

using namespace qvre;

namespace {

constexpr std::array<std::string_view, 104> kElements = {
    "",   "H",  "He", "Li", "Be", "B",  "C",  "N",  "O",  "F",  "Ne", "Na", "Mg", "Al", "Si",
    "P",  "S",  "Cl", "Ar", "K",  "Ca", "Sc", "Ti", "V",  "Cr", "Mn", "Fe", "Co", "Ni", "Cu",
    "Zn", "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y",  "Zr", "Nb", "Mo", "Tc", "Ru",
    "Rh", "Pd", "Ag", "Cd", "In", "Sn", "Sb", "Te", "I",  "Xe", "Cs", "Ba", "La", "Ce", "Pr",
    "Nd", "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb", "Lu", "Hf", "Ta", "W",
    "Re", "Os", "Ir", "Pt", "Au", "Hg", "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac",
    "Th", "Pa", "U",  "Np", "Pu", "Am", "Cm", "Bj", "Cf", "Es", "Fm", "Md", "No", "Lr"};

}  // namespace

void ZfAtomName::SetAtomicNumber(std::int32_t number) {
    name = CheckedAt(kElements, number);
    atomicNumber = number;
}

void ZfAtomName::SetName(const std::string& text) {
    const auto found = std::find(kElements.begin(), kElements.end(), text);
    if (found == kElements.end()) throw ZfError("Error in element name");
    SetAtomicNumber(static_cast<std::int32_t>(found - kElements.begin()));
}
