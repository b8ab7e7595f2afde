#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "prepare/cluster/CrystalCell.h"

namespace qvre {

/// Numbers that the expressions of a crystal may name.
using NamedConstants = std::map<std::string, double>;

/// A ready crystal: "Diamond", "alpha-Sn", or an element that is fcc, bcc, hcp or diamond at room
/// temperature; or a structure type ("fcc", "zincblende", ...) with its elements and lattice constants
/// (angstrom: a, and c where the type has one), which an element that is of this type has of its own. Throws
/// ZfError with the names that exist.
CrystalCell PresetCell(const std::string& name, const std::vector<std::string>& elements,
                       const std::vector<double>& lattice);

/// What PresetCell takes: "Ac, Ag, ..., Diamond, alpha-Sn, fcc, ...".
std::string PresetNames();

/// The crystal of a file, by its extension: .cif or .mmcif, .xyz or .extxyz (with Lattice="..."
/// in the title), .cell (expressions), .vasp, or a name that begins with POSCAR or CONTCAR. The
/// constants serve a .cell file. Throws ZfError that names the file.
CrystalCell LoadCell(const std::string& path, const NamedConstants& constants = {});

/// Whether the name is that of a crystal of expressions, .cell.
bool IsExpressionCell(const std::string& path);

// The readers behind LoadCell take the whole text of a file.

/// CIF, first block that has atoms: of a small structure, expanded by its symmetry operators or, without any,
/// by its space group (International Tables for Crystallography G); or mmCIF with Cartesian atoms. Sites that
/// are partly occupied or disordered are refused.
CrystalCell ParseCif(const std::string& text);

/// POSCAR or CONTCAR of VASP 5, with the elements above the numbers of atoms; what follows the positions does
/// not count.
CrystalCell ParsePoscar(const std::string& text);

/// First frame of an Extended XYZ text. Positions are Cartesian.
CrystalCell ParseXyzCell(const std::string& text);

/// Lengths, angles and atoms as expressions of ZfParser; docs/clusters.md has the format.
CrystalCell ParseExpressionCell(const std::string& text, const NamedConstants& constants = {});

/// Axes with these lengths (angstrom) and angles (degrees): a along x, b in the xy plane, as is usual
/// (International Tables for Crystallography B, section 3.3.1). Throws ZfError for angles that no cell has.
gemmi::Mat33 AxesOf(const std::array<double, 3>& lengths_angstrom, const std::array<double, 3>& angles_deg);

}  // namespace qvre
