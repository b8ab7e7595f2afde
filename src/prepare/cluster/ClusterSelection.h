#pragma once

#include <string>
#include <vector>

#include "prepare/cluster/ClusterCut.h"
#include "prepare/cluster/EmitterSites.h"
#include "prepare/cluster/SurfaceBuilding.h"

namespace qvre {

/// An emitter with the atoms around it.
struct KeptEmitter {
    EmitterSite emitter;            ///< its bounds are those at the start
    std::string surfaceElements;    ///< of the surface plane
    std::vector<SiteInCell> atoms;  ///< the emitter first
    /// For each atom of the cell, how many periods of the surface its highest repetition below the surface
    /// lies above that in the cell (0, 0, 0) of the emitter.
    std::vector<int> periods;
};

/// Which atoms stand in the clusters of a request: found once, kept while the structure changes, so that what
/// is calculated from the clusters is a smooth function of its numbers. Atoms that cross the size of the
/// cluster neither come nor go, layers and terminations stay what they were, and emitters that a symmetry
/// makes equal are there one by one, as it may be lost.
struct ClusterSelection {
    SurfacePlan surface;
    std::vector<std::string> crystal;  ///< elements of the atoms of the cell from which the surface is cut
    std::vector<std::string> cell;     ///< and of that from which the clusters are
    std::vector<KeptEmitter> emitters;
};

}  // namespace qvre
