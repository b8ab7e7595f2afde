#include <algorithm>
#include <cmath>

#include "crystal/CrystalPresets.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/ElementCrystals.h"
#include "prepare/cluster/ExpressionCell.h"

// Structure types by expressions: R. W. G. Wyckoff, Crystal Structures, vol. 1 (Interscience, 1963).

namespace qvre {

namespace {

struct BasisAtom {
    std::size_t element;  // index in the list of elements
    std::array<const char*, 3> coordinates;
};

struct StructureType {
    const char* name;
    std::size_t elements;
    bool hexagonal;
    std::vector<BasisAtom> basis;
};

std::vector<BasisAtom> FaceCentred(std::size_t element) {
    return {{element, {"0", "0", "0"}},
            {element, {"0", "1/2", "1/2"}},
            {element, {"1/2", "0", "1/2"}},
            {element, {"1/2", "1/2", "0"}}};
}

std::vector<BasisAtom> Joined(std::vector<BasisAtom> a, const std::vector<BasisAtom>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

/// A quarter along the diagonal from the face-centred atoms.
std::vector<BasisAtom> Quarter(std::size_t element) {
    return {{element, {"1/4", "1/4", "1/4"}},
            {element, {"3/4", "3/4", "1/4"}},
            {element, {"1/4", "3/4", "3/4"}},
            {element, {"3/4", "1/4", "3/4"}}};
}

std::vector<BasisAtom> HalfEdge(std::size_t element) {
    return {{element, {"1/2", "1/2", "1/2"}},
            {element, {"1/2", "0", "0"}},
            {element, {"0", "1/2", "0"}},
            {element, {"0", "0", "1/2"}}};
}

const std::vector<StructureType>& StructureTypes() {
    static const std::vector<StructureType> types = {
        {"fcc", 1, false, FaceCentred(0)},
        {"bcc", 1, false, {{0, {"0", "0", "0"}}, {0, {"1/2", "1/2", "1/2"}}}},
        {"diamond", 1, false, Joined(FaceCentred(0), Quarter(0))},
        {"hcp", 1, true, {{0, {"1/3", "2/3", "1/4"}}, {0, {"2/3", "1/3", "3/4"}}}},
        {"zincblende", 2, false, Joined(FaceCentred(0), Quarter(1))},
        {"rocksalt", 2, false, Joined(FaceCentred(0), HalfEdge(1))},
        {"CsCl", 2, false, {{0, {"0", "0", "0"}}, {1, {"1/2", "1/2", "1/2"}}}},
        {"wurtzite",
         2,
         true,
         {{0, {"1/3", "2/3", "0"}},
          {0, {"2/3", "1/3", "1/2"}},
          {1, {"1/3", "2/3", "3/8"}},
          {1, {"2/3", "1/3", "7/8"}}}}};
    return types;
}

void CheckParameters(const StructureType& type, std::size_t elements, const std::vector<double>& lattice) {
    const std::size_t lengths = type.hexagonal ? 2 : 1;
    if (elements != type.elements)
        throw ZfError(std::string(type.name) + " needs " + std::to_string(type.elements) + " element(s), " +
                      std::to_string(elements) + " given: set element");
    if (lattice.empty() || lattice.size() > lengths)
        throw ZfError(std::string(type.name) + " needs the lattice constant a" +
                      (type.hexagonal ? " and may have c" : "") + " in angstrom: set lattice");
    for (const double length : lattice)
        if (!(length > 0.0 && std::isfinite(length)))
            throw ZfError("A lattice constant has to be above 0 angstrom");
}

CrystalCell MakeStructure(const StructureType& type, const std::vector<std::string>& elements,
                          const std::vector<double>& lattice) {
    CheckParameters(type, elements.size(), lattice);
    const double ideal = lattice[0] * std::sqrt(8.0 / 3.0);  // closest packing of spheres
    ZfCrystal crystal;
    crystal.latticeConstants = {lattice[0], lattice[0], lattice[0]};
    if (type.hexagonal) crystal.latticeConstants[2] = lattice.size() > 1 ? lattice[1] : ideal;
    crystal.axisDirections = AxisDirections(90.0, 90.0, type.hexagonal ? 120.0 : 90.0);
    for (const auto& [element, coordinates] : type.basis)
        crystal.AddAtom(coordinates[0], coordinates[1], coordinates[2], elements[element], 0, 0.0);
    return CellOfCrystal(crystal);
}

ZfCrystalTable ReadyCrystals() {
    ZfCrystalTable table;
    AddCrystalPresets(table);
    return table;
}

const StructureType* FindType(const std::string& name) {
    for (const StructureType& type : StructureTypes())
        if (name == type.name) return &type;
    return nullptr;
}

/// Lattice constants that need not be given: of an element in the crystal that it forms.
std::vector<double> OwnLattice(const std::string& type, const std::vector<std::string>& elements) {
    const ElementCrystal* own = elements.size() == 1 ? FindElementCrystal(elements[0]) : nullptr;
    return own != nullptr && type == own->type ? own->Lattice() : std::vector<double>();
}

}  // namespace

std::string PresetNames() {
    std::string names;
    for (const ElementCrystal& crystal : ElementCrystals()) names += std::string(crystal.element) + ", ";
    for (const auto& [name, crystal] : ReadyCrystals().crystals)
        if (FindElementCrystal(name) == nullptr) names += name + ", ";
    for (const StructureType& type : StructureTypes()) names += std::string(type.name) + ", ";
    return names.substr(0, names.size() - 2);
}

CrystalCell PresetCell(const std::string& name, const std::vector<std::string>& elements,
                       const std::vector<double>& lattice) {
    const ZfCrystalTable table = ReadyCrystals();
    const auto ready = table.crystals.find(name);
    const ElementCrystal* element = FindElementCrystal(name);
    if ((ready != table.crystals.end() || element != nullptr) && !(elements.empty() && lattice.empty()))
        throw ZfError(name + " has its element and lattice constant; element and lattice belong to a " +
                      "structure type such as fcc");
    if (ready != table.crystals.end()) return CellOfCrystal(ready->second);
    if (element != nullptr) return MakeStructure(*FindType(element->type), {name}, element->Lattice());
    const StructureType* type = FindType(name);
    if (type == nullptr) throw ZfError("There is no preset \"" + name + "\"; there are " + PresetNames());
    return MakeStructure(*type, elements, lattice.empty() ? OwnLattice(name, elements) : lattice);
}

}  // namespace qvre
