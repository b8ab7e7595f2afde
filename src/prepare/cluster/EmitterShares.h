#pragma once

#include <string>
#include <vector>

#include "input/Cluster.h"

namespace qvre {

/// What one structure of a cluster stands for in the sum over the emitters of a surface.
struct EmitterShare {
    double depth_angstrom = 0.0;  ///< of the emitter's nucleus below the surface plane
    double weight = 1.0;          ///< number of such emitters in a cell of the surface, on any scale
    std::string element;
    int site = 0;   ///< in the cell of the crystal, from 1; 0: not known
    int layer = 0;  ///< from 1 at the surface; 0: not known
};

/// What is known of a cluster without its crystal: each structure counts once, and its topmost atom is the
/// surface.
std::vector<EmitterShare> SharesOf(const Cluster& cluster);

/// Where the shares of a cluster file stand: "cu.emitters.csv" beside "cu.xyz".
std::string EmitterSharesBeside(const std::string& clusterFile);

/// Comma-separated table with the columns structure (from 1), element, site, layer, depth (angstrom) and
/// weight, a row for each structure of the cluster in its order. Loading needs structure, depth and weight,
/// and throws ZfError "path: reason" for structures that do not count from 1 and values below 0.
void SaveEmitterShares(const std::vector<EmitterShare>& shares, const std::string& path);
std::vector<EmitterShare> LoadEmitterShares(const std::string& path);

}  // namespace qvre
