#include "prepare/checks/FindingTexts.h"

#include <fmt/format.h>

#include "foundation/Text.h"

namespace qvre {

std::string StructurePrefix(const Cluster& cluster, std::size_t index) {
    return cluster.structures.size() < 2 ? std::string() : fmt::format("structure {}: ", index);
}

std::string PositionText(const ClusterAtom& atom) {
    const double* p = atom.position.Data();
    return fmt::format("({}, {}, {})", DoubleToText(p[0] * 1e10), DoubleToText(p[1] * 1e10),
                       DoubleToText(p[2] * 1e10));
}

std::string ExactText(double value) {
    return fmt::format("{}", value);
}

}  // namespace qvre
