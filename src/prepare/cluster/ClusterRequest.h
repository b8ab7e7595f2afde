#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/ClusterCut.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Everything that makes a cluster.
struct ClusterRequest {
    ClusterShape Shape() const {
        return shape.value_or(allEmitters ? ClusterShape::kParaboloid : ClusterShape::kHemisphere);
    }

    CrystalCell cell;                         ///< of PresetCell or LoadCell
    std::array<int, 3> surface = {0, 0, 1};   ///< Miller indices (h k l)
    double azimuth_deg = 0.0;                 ///< turns the crystal about z, from x towards y
    std::vector<double> domains_deg = {0.0};  ///< further such turns; a structure each

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
