#pragma once

#include "input/Cluster.h"
#include "input/ZfDebye.h"
#include "prepare/attenuation/ValenceElectrons.h"
#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// A solid as the mean free path sees it: its average atom.
struct SolidDensity {
    double density_g_cm3 = 0.0;
    double mass = 0.0;              ///< atomic mass units an atom
    double valenceElectrons = 0.0;  ///< an atom
};

/// The density of a crystal; of a cell with an empty layer, a slab in vacuum, that inside of the slab. Throws
/// ZfError for a slab too thin to tell it, and for elements without weight or number of valence electrons.
SolidDensity DensityOfCrystal(const CrystalCell& cell, const ZfDebye& weights,
                              const ValenceElectrons& valence);

/// The density of a cluster, by the Voronoi cells of its species, each weighted by the number of its atoms.
/// Species without a closed cell, such as adsorbed atoms, do not count. Throws ZfError when they are more
/// than a quarter of the atoms, and for elements without weight or number of valence electrons.
SolidDensity DensityOfCluster(const Cluster& cluster, const ZfDebye& weights,
                              const ValenceElectrons& valence);

}  // namespace qvre
