#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "input/Cluster.h"
#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/ClusterSelection.h"
#include "prepare/cluster/EmitterShares.h"
#include "prepare/cluster/PointSymmetry.h"

namespace qvre {

/// Atoms at one distance from the emitter.
struct NeighbourShell {
    double distance_angstrom = 0.0;
    int atoms = 0;
};

/// What one structure is.
struct StructureSummary {
    std::string title;    ///< "Cu(001) emitter in layer 3, hemisphere radius 6.25 A"
    std::string emitter;  ///< element
    int site = 0;         ///< of the emitter in the cell, from 1
    int layer = 0;        ///< of the emitter
    int weight = 1;       ///< number of emitters for which the structure stands
    ClusterDomain domain;
    double surface_angstrom = 0.0;  ///< height of the surface plane over the emitter
    std::string surfaceElements;    ///< of that plane, such as "As"
    double size_angstrom = 0.0;     ///< of the outermost shell
    std::vector<NeighbourShell> shells;
    std::string nearestElement;  ///< of the first shell
    PointSymmetry symmetry;
};

struct MadeCluster {
    Cluster cluster;
    std::vector<StructureSummary> structures;  ///< one for each of the cluster
    bool hasUiso = false;
    CrystalCell slab;     ///< of a surface that was built, its normal along the third axis; otherwise empty
    std::string remarks;  ///< what the user should know, in lines
};

/// Each is calculated by itself, in the time that one takes.
constexpr std::size_t kMostStructures = 1000;

/// Throws what MakeCluster throws before it cuts: for numbers out of range, a cell that is none, a surface
/// that does not fit it, atoms that collide, emitters and layers that do not exist, more than
/// kMostStructures, and Debye temperatures without their element.
void CheckClusterRequest(const ClusterRequest& request);

/// Builds the surface and cuts one structure for each layer, emitter site and domain, in this order. Throws
/// ZfError with what to change when the request cannot be met.
MadeCluster MakeCluster(const ClusterRequest& request);

/// Chooses the atoms of the clusters that MakeCluster makes; throws what it throws.
ClusterSelection SelectAtoms(const ClusterRequest& start);

/// The clusters of the chosen atoms where another request has them: its lengths and coordinates, relaxation,
/// places of the adsorbates, orientation, domains and displacements. Atoms are in the order of the selection.
/// Depths are those below the highest of the atoms that make the topmost period of the crystal. Emitters that
/// see the same are joined. With the request of the selection these are its own clusters. Throws ZfError for
/// a structure of other atoms and for atoms that collide.
MadeCluster MakeCluster(const ClusterRequest& moved, const ClusterSelection& kept);

std::vector<EmitterShare> SharesOf(const MadeCluster& made);

/// Of a cell whose atoms are all different, such as one of displaced atoms, each makes a structure: what that
/// costs, and what to do. Empty for an ordinary number of structures.
std::string ManyStructuresWarning(std::size_t structures, bool allEmitters = false);

}  // namespace qvre
