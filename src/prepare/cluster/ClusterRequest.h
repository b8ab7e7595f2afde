#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "input/ZfCluster.h"
#include "prepare/cluster/ClusterCut.h"
#include "prepare/cluster/CrystalCell.h"
#include "prepare/cluster/PointSymmetry.h"

/// Everything that makes a cluster.
struct ClusterRequest {
    CrystalCell cell;                         ///< of PresetCell or LoadCell
    std::array<int, 3> surface = {0, 0, 1};   ///< Miller indices (h k l)
    double azimuth_deg = 0.0;                 ///< turns the crystal about z, from x towards y
    std::vector<double> domains_deg = {0.0};  ///< further such turns; a structure each

    std::string emitter;     ///< element; may be empty when the crystal has but one, or with sites
    std::vector<int> sites;  ///< atoms of the cell, from 1; empty: all of the element that a translation does
                             ///< not bring to coincide
    std::vector<int> layers = {3};  ///< from 1 at the surface, counted over all atomic planes
    std::string top;                ///< element of the surface plane; emitters below another one are left out

    ClusterShape shape = ClusterShape::Hemisphere;
    double size_A = 0.0;  ///< radius, or path length of a paraboloid; 0: by number of atoms
    int atoms = 200;      ///< wanted; the nearest whole shell decides

    std::map<std::string, double> debye_K;  ///< Debye temperatures by element; they replace Uiso of the cell
    double temperature_K = 300.0;
    std::string weightTable;  ///< path of AtomicWeight.txt, needed with Debye temperatures
};

/// Atoms at one distance from the emitter.
struct NeighbourShell {
    double distance_A = 0.0;
    int atoms = 0;
};

/// What one structure is.
struct StructureSummary {
    std::string title;            ///< "Cu(001) emitter in layer 3, hemisphere radius 6.25 A"
    std::string emitter;          ///< element
    int site = 0;                 ///< of the emitter in the cell, from 1
    int layer = 0;                ///< of the emitter
    double domain_deg = 0.0;      ///< turn of the domain
    double surface_A = 0.0;       ///< height of the surface plane over the emitter
    std::string surfaceElements;  ///< of that plane, such as "As"
    double size_A = 0.0;          ///< of the outermost shell
    std::vector<NeighbourShell> shells;
    std::string nearestElement;  ///< of the first shell
    PointSymmetry symmetry;
};

struct MadeCluster {
    ZfCluster cluster;
    std::vector<StructureSummary> structures;  ///< one for each of the cluster
    bool hasUiso = false;
};

/// Throws what MakeCluster throws before it cuts: for numbers out of range, a cell that is none, emitters and
/// layers that do not exist, and Debye temperatures without their element.
void CheckClusterRequest(const ClusterRequest& request);

/// Cuts one structure for each layer, emitter site and domain, in this order. Throws ZfError with what to
/// change when the request cannot be met.
MadeCluster MakeCluster(const ClusterRequest& request);
