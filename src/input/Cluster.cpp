#include "input/Cluster.h"

#include <array>
#include <cmath>
#include <utility>

#include "foundation/ZfError.h"
#include "xml/ZfBarnXml.h"

using namespace qvre;

namespace {

constexpr double kEmitterTolerance_A = 0.01;
constexpr double kNearestSquared_A2 = 0.25;

struct TensorElement {
    const char* tag;
    std::int32_t col;
    std::int32_t row;
};
constexpr std::array<TensorElement, 6> kTensorElements = {{{"aniso_U_11", 0, 0},
                                                           {"aniso_U_12", 0, 1},
                                                           {"aniso_U_13", 0, 2},
                                                           {"aniso_U_22", 1, 1},
                                                           {"aniso_U_23", 1, 2},
                                                           {"aniso_U_33", 2, 2}}};

void ReadDisplacement(ZfBarnXml& xml, ClusterAtom& atom) {
    ZfLDoubleMatrix u;
    if (xml.OpenRack("MSD_iso")) {
        u.SetSize(1, 1);
        xml.LDouble("U_iso", u.At(0, 0), 0.0);
        xml.CloseRack("MSD_iso");
    }
    if (xml.OpenRack("MSD_aniso")) {
        u.SetSize(3, 3);
        for (const TensorElement& e : kTensorElements) xml.LDouble(e.tag, u.At(e.col, e.row), 0.0);
        xml.CloseRack("MSD_aniso");
        u.At(1, 0) = u.At(0, 1);
        u.At(2, 0) = u.At(0, 2);
        u.At(2, 1) = u.At(2, 2);  // repeats U_33, not U_23: files in use are read so
    }
    atom.SetUSquareAngstrom(u);
}

void WriteDisplacement(ZfBarnXml& xml, const ClusterAtom& atom) {
    ZfLDoubleMatrix u;
    u = atom.USquareAngstrom();
    if (u.Count() == 1) {
        xml.OpenRack("MSD_iso");
        xml.LDouble("U_iso", u.At(0, 0), 0.0);
        xml.CloseRack("MSD_iso");
    }
    if (u.Count() == 6) {
        xml.OpenRack("MSD_aniso");
        for (const TensorElement& e : kTensorElements) xml.LDouble(e.tag, u.At(e.col, e.row), 0.0);
        xml.CloseRack("MSD_aniso");
    }
}

}  // namespace

namespace qvre {

bool ClusterAtom::Exchange(ZfBarnXml& xml, const std::string& itemTag) {
    if (!xml.OpenRack(itemTag)) return false;
    xml.Text("name", name, "");
    xml.Text("atom", atom, "");
    xml.LDouble("valency", valency, 0.0);
    ZfLDoubleMatrix p;
    p = PositionAngstrom();
    xml.LDouble("x", p.VectorAt(0), 0.0);
    xml.LDouble("y", p.VectorAt(1), 0.0);
    xml.LDouble("z", p.VectorAt(2), 0.0);
    if (xml.IsWriting()) {
        WriteDisplacement(xml, *this);
    } else {
        SetPositionAngstrom(p);
        ReadDisplacement(xml, *this);
    }
    xml.CloseRack(itemTag);
    return true;
}

bool Structure::Exchange(ZfBarnXml& xml, const std::string& tag) {
    if (!xml.OpenRack(tag)) return false;
    xml.RecordList("atoms", "i", atoms);
    xml.CloseRack(tag);
    if (!xml.IsWriting()) SortAtomsByDistance(atoms);
    return true;
}

bool Cluster::Exchange(ZfBarnXml& xml, bool validate) {
    if (!xml.OpenRack("zf_crystal_structure_data")) return false;
    if (xml.OpenRack("data")) {
        xml.RecordList("list_structure", "structure", structures);
        xml.CloseRack("data");
    }
    xml.CloseRack("zf_crystal_structure_data");
    if (xml.IsWriting() || !validate) return true;
    for (std::size_t i = 0; i < structures.size(); ++i) {
        try {
            ValidateCluster(structures[i]);
        } catch (ZfError& error) {
            error.message += "/CLUSER:" + std::to_string(i);
            throw;
        }
    }
    return true;
}

void SelectionSort(std::vector<ClusterAtom>& atoms, std::vector<double> keys) {
    for (std::size_t i = 0; i + 1 < atoms.size(); ++i) {
        std::size_t smallest = i;
        for (std::size_t j = i + 1; j < atoms.size(); ++j)
            if (keys[j] < keys[smallest]) smallest = j;
        if (smallest == i) continue;
        std::swap(atoms[i], atoms[smallest]);
        std::swap(keys[i], keys[smallest]);
    }
}

}  // namespace qvre

void SortAtomsByDistance(std::vector<ClusterAtom>& atoms) {
    std::vector<double> keys;
    keys.reserve(atoms.size());
    for (const ClusterAtom& atom : atoms) keys.push_back(NormSquared(atom.position));
    SelectionSort(atoms, std::move(keys));
}

void ValidateCluster(Structure& structure) {
    std::vector<ClusterAtom>& atoms = structure.atoms;
    if (atoms.empty()) throw ZfError("Structure has no atoms");
    SortAtomsByDistance(atoms);

    std::vector<std::array<double, 3>> angstrom;
    angstrom.reserve(atoms.size());
    for (const ClusterAtom& atom : atoms) {
        const double* p = atom.position.Data();
        angstrom.push_back({p[0] * 1e10, p[1] * 1e10, p[2] * 1e10});
    }
    const auto& [x0, y0, z0] = angstrom[0];
    if (std::sqrt(x0 * x0 + y0 * y0 + z0 * z0) >= kEmitterTolerance_A)
        throw ZfError("Emitter shoud be located at origin (0,0,0)");
    for (std::size_t i = 0; i < angstrom.size(); ++i) {
        for (std::size_t j = i + 1; j < angstrom.size(); ++j) {
            const double dx = angstrom[j][0] - angstrom[i][0];
            const double dy = angstrom[j][1] - angstrom[i][1];
            const double dz = angstrom[j][2] - angstrom[i][2];
            if (dx * dx + dy * dy + dz * dz <= kNearestSquared_A2)
                throw ZfError("Atomic distance should be larger thatn 0.5A " + std::to_string(i) + ".vs." +
                              std::to_string(j));
        }
    }
}
