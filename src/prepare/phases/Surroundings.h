#pragma once

#include <string>
#include <vector>

#include "input/Cluster.h"
#include "prepare/atomic/SuperposedField.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// What surrounds the atoms of one species.
struct AtomSurroundings {
    std::string name;  ///< label of the atoms; phase shifts are found by it
    std::string element;
    std::vector<AtomShell> shells;  ///< rising distance
    double cellVolume = 0.0;        ///< bohr^3; 0: the surroundings leave it open
    double weight = 1.0;            ///< atoms of the species
    /// Atoms found within twice the nearest distance, itself among them, over those that the cell volume lets
    /// expect: near 1 where nothing is missing. 0 with an open cell.
    double completeness = 0.0;

    double NearestDistance() const;  ///< bohr; throws ZfError without neighbours
};

/// How far neighbours count, angstrom: the fields of free atoms have decayed to 1e-7 hartree.
constexpr double kSurroundingsReach = 16.0;

/// The species of a periodic crystal, in the order of its cell: one for each element, which is the name of
/// its atoms in a cluster. Atoms of one element have to have like surroundings; those of the first one count.
/// Throws ZfError for what is no cell.
std::vector<AtomSurroundings> SurroundingsInCrystal(const CrystalCell& cell);

/// The species of a cluster, in the order of first appearance, each as the atom with the most neighbours sees
/// it. The cut leaves gaps around any single atom; every other atom of the species with the same nearest
/// neighbours in the same directions, which in a crystal stands a lattice vector away, helps to fill them.
/// Throws ZfError for an atom that stands alone, and for more names than a phase-shift file has room for.
std::vector<AtomSurroundings> SurroundingsInCluster(const Cluster& cluster);

/// The plain list of a file. "species NAME ELEMENT VOLUME [COUNT]" begins a species, with the volume of its
/// cell in cubic angstrom and the atoms of the species in the formula; each following line "ELEMENT DISTANCE
/// COUNT" is a shell, in angstrom; "#" begins a comment. Throws ZfError that quotes the line.
std::vector<AtomSurroundings> ReadSurroundings(const std::string& path);

}  // namespace qvre
