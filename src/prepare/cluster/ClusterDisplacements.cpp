#include "prepare/cluster/ClusterDisplacements.h"

#include <algorithm>

#include "foundation/ZfError.h"
#include "prepare/thermal/AtomicWeights.h"
#include "prepare/thermal/Elements.h"
#include "prepare/thermal/Vibrations.h"

namespace qvre {

namespace {

void CheckTemperatures(const ClusterRequest& request) {
    if (request.temperature_K == 0.0) throw ZfError("The temperature has to be above 0 kelvin");
    const std::vector<std::string> elements = request.cell.Elements();
    for (const auto& [element, temperature] : request.debye_K) {
        CheckDebyeTemperature(element, temperature);
        if (std::find(elements.begin(), elements.end(), element) == elements.end())
            throw ZfError("A Debye temperature is given for " + element +
                          ", which the crystal does not hold");
    }
}

double DebyeUiso_angstrom2(const ZfDebye& debye, const ClusterRequest& request, const std::string& element) {
    return debye.CalcUiso(request.temperature_K, AtomicNumberOf(element), request.debye_K.at(element)) * 1e20;
}

}  // namespace

bool SettleDisplacements(ClusterRequest& request) {
    std::vector<CellAtom>& atoms = request.cell.atoms;
    for (const CellAtom& atom : atoms)
        if (!(atom.Uiso_angstrom2 >= 0.0))
            throw ZfError("A mean square displacement of the crystal is negative");
    if (!request.debye_K.empty()) {
        CheckTemperatures(request);
        const ZfDebye debye = LoadAtomicWeights(request.weightTable);
        for (CellAtom& atom : atoms)
            if (request.debye_K.count(atom.element) > 0)
                atom.Uiso_angstrom2 = DebyeUiso_angstrom2(debye, request, atom.element);
    }
    const auto without = std::find_if(atoms.begin(), atoms.end(),
                                      [](const CellAtom& atom) { return atom.Uiso_angstrom2 == 0.0; });
    if (without != atoms.end() && !request.debye_K.empty())
        throw ZfError("Give a Debye temperature for " + without->element +
                      " too: its displacement is not known");
    return without == atoms.end();
}

void SetDisplacements(const CrystalCell& cell, const ClusterCut& cut, Structure& structure) {
    for (std::size_t i = 0; i < cut.atoms.size(); ++i) {
        ZfLDoubleMatrix u(1, 1);
        u.At(0, 0) = cell.atoms[cut.atoms[i].atom.site].Uiso_angstrom2;
        structure.atoms[i].SetUSquareAngstrom(u);
    }
}

}  // namespace qvre
