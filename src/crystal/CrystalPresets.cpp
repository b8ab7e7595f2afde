#include "crystal/CrystalPresets.h"

namespace qvre {

namespace {

void AddFaceCentredBasis(ZfCrystal& crystal, const std::string& element) {
    crystal.AddAtom("0", "0", "0", element, 0, 0.0);
    crystal.AddAtom("0", "1/2", "1/2", element, 0, 0.0);
    crystal.AddAtom("1/2", "0", "1/2", element, 0, 0.0);
    crystal.AddAtom("1/2", "1/2", "0", element, 0, 0.0);
}

/// The second sublattice of the diamond structure, a quarter along the diagonal from the first.
void AddQuarterBasis(ZfCrystal& crystal, const std::string& element) {
    crystal.AddAtom("1/4", "1/4", "1/4", element, 1, 0.0);
    crystal.AddAtom("3/4", "3/4", "1/4", element, 1, 0.0);
    crystal.AddAtom("1/4", "3/4", "3/4", element, 1, 0.0);
    crystal.AddAtom("3/4", "1/4", "3/4", element, 1, 0.0);
}

/// A cube with the primitive vectors of the face-centred lattice and no atoms yet.
ZfCrystal FaceCentredCube(const std::string& name, double latticeConstant) {
    ZfCrystal crystal;
    crystal.name = name;
    crystal.SetUnitAxes();
    crystal.latticeConstants[0] = latticeConstant;
    crystal.SetLatticeVector(0, "0", "1/2", "1/2");
    crystal.SetLatticeVector(1, "1/2", "0", "1/2");
    crystal.SetLatticeVector(2, "1/2", "1/2", "0");
    return crystal;
}

void AddFaceCentred(ZfCrystalTable& table, const std::string& name, const std::string& element,
                    double latticeConstant) {
    ZfCrystal crystal = FaceCentredCube(name, latticeConstant);
    AddFaceCentredBasis(crystal, element);
    crystal.Build();
    table.Add(crystal);
}

void AddDiamond(ZfCrystalTable& table, const std::string& name, const std::string& element,
                double latticeConstant) {
    ZfCrystal crystal = FaceCentredCube(name, latticeConstant);
    AddFaceCentredBasis(crystal, element);
    AddQuarterBasis(crystal, element);
    crystal.Build();
    table.Add(crystal);
}

}  // namespace

void AddCrystalPresets(ZfCrystalTable& table) {
    AddFaceCentred(table, "Cu", "Cu", 3.61);
    AddDiamond(table, "Diamond", "C", 3.567);
    AddDiamond(table, "Si", "Si", 5.43);
    AddDiamond(table, "Ge", "Ge", 5.658);
    AddDiamond(table, "alpha-Sn", "Sn", 6.49);
}

}  // namespace qvre
