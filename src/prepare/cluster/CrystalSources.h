#pragma once

#include <array>
#include <string>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// A ready crystal ("Cu", "Si", ...), or a structure type ("fcc", "zincblende", ...) with its elements and
/// lattice constants (angstrom: a, and c where the type has one). Throws ZfError with the names that exist.
CrystalCell PresetCell(const std::string& name, const std::vector<std::string>& elements,
                       const std::vector<double>& lattice);

std::vector<std::string> PresetNames();  ///< of crystals and structure types

/// The crystal of a file, by its extension: .cif, .xyz or .extxyz (with Lattice="..." in the title) or .cell
/// (expressions). Throws ZfError that names the file.
CrystalCell LoadCell(const std::string& path);

// The readers behind LoadCell take the whole text of a file.

/// CIF of a small structure, first block that has atoms, expanded by its symmetry operators or, without any,
/// by its space group (International Tables for Crystallography G). Sites that are partly occupied or
/// disordered are refused.
CrystalCell ParseCif(const std::string& text);

/// First frame of an Extended XYZ text. Positions are Cartesian.
CrystalCell ParseXyzCell(const std::string& text);

/// Lengths, angles and atoms as expressions of ZfParser; docs/clusters.md has the format.
CrystalCell ParseExpressionCell(const std::string& text);

/// Axes with these lengths (angstrom) and angles (degrees): a along x, b in the xy plane, as is usual
/// (International Tables for Crystallography B, section 3.3.1). Throws ZfError for angles that no cell has.
gemmi::Mat33 AxesOf(const std::array<double, 3>& lengths_angstrom, const std::array<double, 3>& angles_deg);

}  // namespace qvre
