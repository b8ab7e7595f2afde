#pragma once

#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/CellSymmetry.h"
#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/Superstructure.h"
#include "prepare/cluster/SurfaceRelaxation.h"
#include "prepare/cluster/SurfaceSites.h"
#include "prepare/cluster/SurfaceSlab.h"

namespace qvre {

/// Where an adsorbate sits.
struct AdsorbatePlan {
    std::optional<SurfaceSite> site;  ///< none: fractions of the (1x1) cell tell
    bool fillsEachCell = false;       ///< (1x1); otherwise one in each of the superstructure
};

/// What a surface is built of, whatever its lengths, places and angles come to: which atoms its slab has,
/// between which of them the adsorbates sit, which atoms move together. Parameters that change by little or
/// by much leave it alone, so that atoms neither come nor go nor change their order.
struct SurfacePlan {
    bool IsEmpty() const { return substrate.atoms.empty(); }  ///< the crystal is cut as it is

    SlabSites substrate;  ///< in the (1x1) cell
    Superstructure superstructure;
    std::string superstructureName;
    std::vector<AdsorbatePlan> adsorbates;
    std::vector<std::vector<MovedAtom>> moves;  ///< for each of the relaxation
    std::string terraces;                       ///< of TerraceRemarks
    /// How far atoms may be from a symmetry that joins domains.
    double symmetryTolerance_angstrom = CellSymmetry::kSamePlace_angstrom;
};

/// Plans the surface that the request asks for (`structure`): a slab in a cell of the surface, thick enough
/// for the clusters asked for. Throws ZfError for what does not fit the surface.
SurfacePlan PlanSurface(const ClusterRequest& request);

/// The same, for a structure that moves: its domains part with the first small step away from a symmetry, as
/// far as the coordinates at the start have the digits for it.
SurfacePlan PlanMovingSurface(const ClusterRequest& request);

/// Builds a planned surface between vacuum, with its layers relaxed and the adsorbates on it, and gives the
/// request for clusters of it, whose structure is empty. The axes x and y stay those of the crystal that was
/// cut. What was built is told in the remarks: the cell, bonds that are shorter than usual, and domains that
/// the request leaves out. Throws ZfError for layers that would lie on each other and for atoms that collide.
ClusterRequest BuiltSurface(const ClusterRequest& request, const SurfacePlan& plan);

/// Both at once.
ClusterRequest OnBuiltSurface(const ClusterRequest& request);

}  // namespace qvre
