#include <algorithm>
#include <cmath>

#include "crystal/CrystalPresets.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"
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

std::string JoinedNames() {
    std::string names;
    for (const std::string& name : PresetNames()) names += (names.empty() ? "" : ", ") + name;
    return names;
}

}  // namespace

std::vector<std::string> PresetNames() {
    std::vector<std::string> names;
    for (const auto& [name, crystal] : ReadyCrystals().crystals) names.push_back(name);
    for (const StructureType& type : StructureTypes()) names.emplace_back(type.name);
    return names;
}

CrystalCell PresetCell(const std::string& name, const std::vector<std::string>& elements,
                       const std::vector<double>& lattice) {
    const ZfCrystalTable table = ReadyCrystals();
    const auto ready = table.crystals.find(name);
    if (ready != table.crystals.end()) {
        if (!elements.empty() || !lattice.empty())
            throw ZfError(name + " has its element and lattice constant; element and lattice belong to a " +
                          "structure type such as fcc");
        return CellOfCrystal(ready->second);
    }
    const auto& types = StructureTypes();
    const auto type =
        std::find_if(types.begin(), types.end(), [&](const StructureType& t) { return name == t.name; });
    if (type == types.end()) throw ZfError("There is no preset \"" + name + "\"; there are " + JoinedNames());
    return MakeStructure(*type, elements, lattice);
}

}  // namespace qvre
