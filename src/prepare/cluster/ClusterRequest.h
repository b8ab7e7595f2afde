#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/ClusterCut.h"
#include "prepare/cluster/CrystalCell.h"
#include "prepare/cluster/SurfaceStructure.h"

namespace qvre {

/// One orientation of the crystal.
struct ClusterDomain {
    double turn_deg = 0.0;    ///< about the normal, from x towards y
    bool isMirrored = false;  ///< before the turn, at the plane through the normal and the x axis
    double weight = 1.0;      ///< share of the surface, on any scale
};

/// Everything that makes a cluster.
struct ClusterRequest {
    ClusterShape Shape() const {
        return shape.value_or(allEmitters ? ClusterShape::kParaboloid : ClusterShape::kHemisphere);
    }

    CrystalCell cell;                        ///< of PresetCell or LoadCell
    std::array<int, 3> surface = {0, 0, 1};  ///< Miller indices (h k l)
    SurfaceStructure structure;              ///< what makes the surface differ from the crystal that is cut
    std::string surfaceName;   ///< in titles, such as "c(2x2)-O/Ni(001)"; empty: that of the cell and surface
    std::string remarks;       ///< what was told when the surface was built, in lines
    double azimuth_deg = 0.0;  ///< turns the crystal about z, from x towards y
    std::vector<ClusterDomain> domains = {ClusterDomain{}};  ///< on top of that; a structure each

    std::string emitter;     ///< element; may be empty when the crystal has but one, or with sites
    std::vector<int> sites;  ///< atoms of the cell, from 1; empty: all of the element that a translation does
                             ///< not bring to coincide
    std::vector<int> layers = {3};  ///< from 1 at the surface, counted over all atomic planes
    std::string top;                ///< element of the surface plane; emitters below another one are left out

    bool allEmitters = false;     ///< all of the element below one termination, instead of sites, layers, top
    double depth_angstrom = 0.0;  ///< of the deepest of them
    std::string termination;      ///< number or topmost elements, as ChosenTermination reads it
    std::optional<double> layerTolerance_angstrom;  ///< none: LayerTolerance_angstrom has the usual one

    std::optional<ClusterShape> shape;  ///< none: a paraboloid for all emitters, which holds the way out of a
                                        ///< deep one, and otherwise a hemisphere
    double size_angstrom = 0.0;         ///< radius, or path length of a paraboloid; 0: by number of atoms
    int atoms = 200;                    ///< wanted; the nearest whole shell decides

    std::map<std::string, double> debye_K;  ///< Debye temperatures by element; they replace Uiso of the cell
    double temperature_K = 300.0;
    std::string weightTable;  ///< path of AtomicWeight.txt, needed with Debye temperatures
};

}  // namespace qvre
