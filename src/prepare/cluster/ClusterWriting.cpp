#include "prepare/cluster/ClusterWriting.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

std::string ExtensionOf(const std::string& path) {
    return std::filesystem::path(path).extension().string();
}

/// Numbers with room for four digits and a sign.
std::string AtomLine(const ClusterAtom& atom, bool withUiso, int decimals) {
    std::string line = fmt::format("{:<2}", atom.atom);
    for (int i = 0; i < 3; ++i)
        line += fmt::format("{:{}.{}f}", atom.PositionAngstrom().VectorAt(i), decimals + 7, decimals);
    if (withUiso) line += fmt::format("{:{}.{}f}", atom.USquareAngstrom().At(0, 0), decimals + 5, decimals);
    return line + "\n";
}

std::string ClusterAsXml(Cluster cluster) {
    ZfBarnXml xml("w");
    cluster.Exchange(xml, false);
    return xml.Document();
}

}  // namespace

void CheckClusterExtension(const std::string& path) {
    const std::string extension = ExtensionOf(path);
    if (extension != ".xml_cl" && extension != ".xyz")
        throw ZfError("Cannot tell the format of " + path + ": a cluster is written as .xml_cl or .xyz");
}

std::string ClusterAsXyz(const Cluster& cluster, const XyzStyle& style) {
    std::string text;
    for (std::size_t i = 0; i < cluster.structures.size(); ++i) {
        const std::vector<ClusterAtom>& atoms = cluster.structures[i].atoms;
        const bool withUiso = std::all_of(atoms.begin(), atoms.end(),
                                          [](const ClusterAtom& atom) { return atom.U.Count() == 1; });
        // The reader drops blank lines, so a title may not be empty.
        std::string title =
            style.titles.empty() ? "cluster" : style.titles[std::min(i, style.titles.size() - 1)];
        if (withUiso) title += R"( Properties="species:S:1:pos:R:3:Uiso:R:1")";
        text += std::to_string(atoms.size()) + "\n" + title + "\n";
        for (const ClusterAtom& atom : atoms) text += AtomLine(atom, withUiso, style.decimals);
    }
    return text;
}

void WriteCluster(const Cluster& cluster, const std::string& path, const XyzStyle& style) {
    CheckClusterExtension(path);
    const bool isXyz = ExtensionOf(path) == ".xyz";
    WriteWholeFile(path, isXyz ? ClusterAsXyz(cluster, style) : ClusterAsXml(cluster));
}

}  // namespace qvre
