#pragma once

#include <string>
#include <vector>

#include "input/Cluster.h"

namespace qvre {

/// How a cluster is written as Extended XYZ.
struct XyzStyle {
    std::vector<std::string> titles;  ///< of the frames; one for all, or one each
    int decimals = 10;                ///< of lengths (angstrom) and Uiso (square angstrom), 1 to 15
};

/// Throws ZfError unless the extension is one that WriteCluster knows.
void CheckClusterExtension(const std::string& path);

/// Writes a cluster, by the extension: .xml_cl (6 significant digits) or .xyz (as many as the style says, and
/// Uiso in a fifth column when all atoms of a structure have an isotropic displacement). The file appears
/// whole or not at all.
void WriteCluster(const Cluster& cluster, const std::string& path, const XyzStyle& style);

std::string ClusterAsXyz(const Cluster& cluster, const XyzStyle& style);

}  // namespace qvre
