#pragma once

#include <cstddef>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Two atoms of a cell, images included, that are closer than a bond between their elements is.
struct ShortBond {
    std::size_t first = 0;  ///< index in the cell
    std::size_t second = 0;
    double distance = 0.0;  ///< angstrom
    double usual = 0.0;     ///< sum of the covalent radii (B. Cordero et al., Dalton Trans. 2832 (2008))
};

/// Bonds shorter than 0.8 of the usual length, each from both of its ends, in the order of the atoms.
std::vector<ShortBond> ShortBondsOf(const CrystalCell& cell);

}  // namespace qvre
