#include "crystal/ZfCrystal.h"

#include <cmath>

#include "crystal/ZfParser.h"
#include "foundation/ZfError.h"

using namespace qvre;

namespace {

void SetAlongAxes(ZfLDoubleMatrix& target, const std::array<ZfLDoubleMatrix, 3>& axes, ZfParser& parser,
                  const std::string& x, const std::string& y, const std::string& z) {
    target = Scale(axes[0], parser.Calculate(x));
    AddInPlace(target, Scale(axes[1], parser.Calculate(y)));
    AddInPlace(target, Scale(axes[2], parser.Calculate(z)));
}

}  // namespace

void ZfCrystal::SetLatticeVector(std::size_t index, const std::string& x, const std::string& y,
                                 const std::string& z) {
    CheckedAt(latticeX, index) = x;
    CheckedAt(latticeY, index) = y;
    CheckedAt(latticeZ, index) = z;
}

void ZfCrystal::AddAtom(const std::string& x, const std::string& y, const std::string& z,
                        const std::string& element, std::int32_t kind, double weight) {
    ZfAtomAttr atom;
    atom.element = element;
    atom.coordinates = {x, y, z};
    atom.kind = kind;
    atom.weight = weight;
    atoms.push_back(atom);
}

void ZfCrystal::SetUnitAxes() {
    axisDirections = {Vector3(1.0, 0.0, 0.0), Vector3(0.0, 1.0, 0.0), Vector3(0.0, 0.0, 1.0)};
}

void ZfCrystal::Build() {
    for (std::size_t i = 0; i < axes.size(); ++i) {
        const double normSquared = NormSquared(axisDirections[i]);
        if (normSquared != 0.0) axisDirections[i].ScaleInPlace(1.0 / std::sqrt(normSquared));
        const double length = latticeConstants[i] != 0.0 ? latticeConstants[i] : latticeConstants[0];
        axes[i] = Scale(axisDirections[i], length);
    }

    const std::size_t count = latticeVectors.size();
    if (latticeX.size() < count || latticeY.size() < count || latticeZ.size() < count) throw ZfError("Error");
    ZfParser parser;
    parser.constants = constants;
    for (std::size_t i = 0; i < count; ++i)
        SetAlongAxes(latticeVectors[i], axes, parser, latticeX[i], latticeY[i], latticeZ[i]);

    kinds.clear();
    for (ZfAtomAttr& atom : atoms) {
        const auto& [x, y, z] = atom.coordinates;
        SetAlongAxes(atom.position, axes, parser, x, y, z);
        kinds.insert(atom.kind);
    }
}

void ZfCrystalTable::Add(const ZfCrystal& crystal) {
    crystals.insert_or_assign(crystal.name, crystal);
}
