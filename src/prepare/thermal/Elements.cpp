#include "prepare/thermal/Elements.h"

#include <algorithm>

#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"

namespace qvre {

std::vector<std::string> ElementsOf(const Cluster& cluster) {
    std::vector<std::string> elements;
    for (const Structure& structure : cluster.structures)
        for (const ClusterAtom& atom : structure.atoms)
            if (std::find(elements.begin(), elements.end(), atom.atom) == elements.end())
                elements.push_back(atom.atom);
    return elements;
}

std::int32_t AtomicNumberOf(const std::string& element) {
    ZfAtomName name;
    try {
        name.SetName(element);
    } catch (const ZfError&) {
        name.SetAtomicNumber(0);
    }
    if (name.GetAtomicNumber() == 0)
        throw ZfError("There is no element \"" + element + "\": write symbols as in Cu, case counts");
    return name.GetAtomicNumber();
}

}  // namespace qvre
