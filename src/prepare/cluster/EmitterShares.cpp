#include "prepare/cluster/EmitterShares.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <optional>

#include "foundation/CommaTable.h"
#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/StrictNumber.h"
#include "foundation/ZfError.h"

namespace qvre {

namespace {

double NotNegative(const std::string& text, const std::string& what) {
    const double number = StrictNumber(text, what);
    if (number < 0.0) throw ZfError(fmt::format("{}: {} is below 0", what, text));
    return number;
}

int CountOf(const CommaTable& table, const std::vector<std::string>& row, const std::string& title) {
    const std::optional<std::size_t> column = table.Find(title);
    if (!column) return 0;
    constexpr double kMost = 1e9;
    return static_cast<int>(std::min(NotNegative(row[*column], title), kMost));
}

std::vector<EmitterShare> SharesOf(const CommaTable& table) {
    const std::size_t structure = table.Column("structure");
    const std::size_t depth = table.Column("depth");
    const std::size_t weight = table.Column("weight");
    const std::optional<std::size_t> element = table.Find("element");
    std::vector<EmitterShare> shares;
    for (const std::vector<std::string>& row : table.rows) {
        const auto number = static_cast<double>(shares.size() + 1);
        if (StrictNumber(row[structure], "structure") != number)
            throw ZfError(
                fmt::format("row {0} is of structure {1}: a row for each structure is needed, in "
                            "their order, from 1",
                            shares.size() + 1, row[structure]));
        shares.push_back({NotNegative(row[depth], "depth"), NotNegative(row[weight], "weight"),
                          element ? row[*element] : "", CountOf(table, row, "site"),
                          CountOf(table, row, "layer")});
    }
    const bool counts = std::any_of(shares.begin(), shares.end(),
                                    [](const EmitterShare& share) { return share.weight > 0.0; });
    if (!counts) throw ZfError("no structure has a weight above 0");
    return shares;
}

}  // namespace

std::vector<EmitterShare> SharesOf(const Cluster& cluster) {
    std::vector<EmitterShare> shares;
    for (const Structure& structure : cluster.structures) {
        EmitterShare share;
        if (!structure.atoms.empty()) share.element = structure.atoms.front().atom;
        for (const ClusterAtom& atom : structure.atoms)
            share.depth_angstrom = std::max(share.depth_angstrom, atom.PositionAngstrom().VectorAt(2));
        shares.push_back(share);
    }
    return shares;
}

std::string EmitterSharesBeside(const std::string& clusterFile) {
    return std::filesystem::path(clusterFile).replace_extension(".emitters.csv").string();
}

void SaveEmitterShares(const std::vector<EmitterShare>& shares, const std::string& path) {
    std::string text = "structure,element,site,layer,depth,weight\n";
    for (std::size_t i = 0; i < shares.size(); ++i) {
        const EmitterShare& share = shares[i];
        text += fmt::format("{},{},{},{},{:.6f},{:g}\n", i + 1, share.element, share.site, share.layer,
                            share.depth_angstrom, share.weight);
    }
    WriteWholeFile(path, text);
}

std::vector<EmitterShare> LoadEmitterShares(const std::string& path) {
    return Naming(path, [&] { return SharesOf(CommaTable(ReadTextFile(path))); });
}

}  // namespace qvre
