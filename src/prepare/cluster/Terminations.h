#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/SurfaceFrame.h"

namespace qvre {

/// A layer under a termination.
struct SurfaceLayer {
    std::string elements;          ///< "O Ti", in alphabetical order
    double depth_angstrom = 0.0;   ///< of its highest plane, below the top of the crystal
    double rumple_angstrom = 0.0;  ///< height of its highest plane over its lowest
};

/// The neighbours of atoms in the top layer: the atoms no farther than 1.15 times the nearest one in the
/// crystal, which for simple structures is the first shell.
struct TopNeighbours {
    std::string element;
    int left = 0;    ///< at the surface
    int inBulk = 0;  ///< of the crystal without a surface
};

/// One way to end a crystal at a surface: the choice of its topmost layer. Layers that a symmetry of the
/// crystal brings to coincide, with its normal kept, are one termination.
struct Termination {
    std::size_t topmost = 0;                ///< the highest plane, index in the frame counted on
    std::vector<SurfaceLayer> layers;       ///< the topmost ones, from above
    std::vector<TopNeighbours> neighbours;  ///< of the atoms in the top layer, each kind once
    int brokenBonds = 0;                    ///< neighbours that the atoms of one cell have lost
    /// Terraces a step away are turned by these angles, besides 0; degrees from x towards y.
    std::vector<double> turns_deg;
    /// Terraces a step away are mirror images as well, which no turn makes, at a plane of this azimuth
    /// against the x axis of the frame.
    std::optional<double> mirror_deg;
};

/// The terminations by the number of broken bonds, the fewest first; of equal ones, that with the larger
/// distance to the next layer, then by the elements of the layers, then by the height in the cell. A slab has
/// those below its vacuum. Throws ZfError for Miller indices so high that planes lie within 0.01 angstrom.
std::vector<Termination> FindTerminations(const CrystalCell& cell, const SurfaceFrame& frame);

/// The one that the request names, by its number from 1 or by the elements of its topmost layers, such as
/// "O" or "O / O Ti"; without a name the only one. Throws ZfError with the list where that does not settle
/// it.
Termination ChosenTermination(const ClusterRequest& request, const SurfaceFrame& frame);

/// How far planes of one layer may lie apart: what the request says, or 0.3 angstrom for all emitters under a
/// termination and single planes otherwise.
double LayerTolerance_angstrom(const ClusterRequest& request);

/// Throws ZfError for a tolerance below 0 or beyond 2 angstrom.
void CheckLayerTolerance(const ClusterRequest& request);

/// Which other terraces of the chosen termination a real surface has, in lines; empty when the request names
/// domains.
std::string TerraceRemarks(const ClusterRequest& request, const SurfaceFrame& frame);

/// The terminations of the surface in lines: number, layers, neighbours, terraces.
std::string TerminationListing(ClusterRequest request);

}  // namespace qvre
