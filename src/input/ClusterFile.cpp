#include <string>

#include "foundation/Console.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "foundation/ZfFileQt.h"
#include "input/Cluster.h"
#include "xml/ZfBarnFile.h"

using namespace qvre;

// The two formats of a cluster on disk: the choice between them, and Extended XYZ.

namespace {

constexpr const char* kUisoProperties = R"(Properties="species:S:1:pos:R:3:Uiso:R:1")";
constexpr const char* kExtendedXyzAddress = "https://github.com/libAtoms/extxyz";

/// The text behind the last dot of the file name; none for a dot at either end of the path.
std::string Extension(const std::string& path) {
    const std::size_t dot = path.find_last_of("./\\");
    if (dot == std::string::npos || dot == 0 || path[dot] != '.') return {};
    return path.substr(dot + 1);
}

ClusterAtom XyzAtom(const std::vector<std::string>& tokens) {
    ClusterAtom atom;
    atom.name = tokens[0];
    atom.atom = tokens[0];
    atom.SetPositionAngstrom(
        Vector3(TextToDouble(tokens[1]), TextToDouble(tokens[2]), TextToDouble(tokens[3])));
    if (tokens.size() == 5) {
        ZfLDoubleMatrix u(1, 1);
        u.At(0, 0) = TextToDouble(tokens[4]);
        atom.SetUSquareAngstrom(u);
    }
    return atom;
}

void CheckXyzLine(const std::vector<std::string>& tokens, const std::string& title) {
    if (tokens.size() != 4 && tokens.size() != 5) throw ZfError("File is not XYZ structure");
    if (tokens.size() == 5 && title.find(kUisoProperties) == std::string::npos)
        throw ZfError(std::string("title should include :") + kUisoProperties + "\n please see " +
                      kExtendedXyzAddress);
}

}  // namespace

namespace qvre {

void Cluster::ReadXyz(ZfFile& file) {
    structures.clear();
    std::string text;
    file.ReadAll(text);
    const std::vector<std::string> lines = LineSplit(text);
    std::size_t next = 0;
    while (next + 1 < lines.size()) {
        const std::int32_t count = TextToInt(lines[next]);
        const std::string& title = lines[next + 1];
        next += 2;
        if (count == 0) return;
        Structure structure;
        for (std::int32_t i = 0; i < count && next < lines.size(); ++i, ++next) {
            const std::vector<std::string> tokens = TokenSplit(lines[next]);
            CheckXyzLine(tokens, title);
            structure.atoms.push_back(XyzAtom(tokens));
        }
        structures.push_back(std::move(structure));
    }
}

}  // namespace qvre

void ZfLoadCluster(Cluster& cluster, const std::string& path) {
    const std::string extension = Extension(path);
    if (extension == "xml_cl") {
        ZfBarnFile file(path, "r");
        cluster.Exchange(file, true);
    } else if (extension == "xyz") {
        ZfFileQt file(path, "r");
        cluster.ReadXyz(file);
    } else {
        throw ZfError("Cannot load cluster file. Please use .xyz or .xml_cl");
    }
    ConsoleLine("loaded cluster " + std::to_string(cluster.structures.size()));
    if (cluster.structures.empty()) throw ZfError("Cluster is empity");
    ConsoleLine("The number of atoms in cluster" + std::to_string(cluster.structures[0].atoms.size()));
}
