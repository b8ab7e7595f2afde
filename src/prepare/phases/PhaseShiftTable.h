#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace qvre {

/// Phase shifts of one atom, by energy, from a published table.
struct PhaseShiftTable {
    std::vector<double> energies_eV;           ///< rising, two at least
    std::vector<std::vector<double>> degrees;  ///< one row an energy, over l; all of one size
    double radius_angstrom = 0.0;              ///< muffin-tin radius, where the table tells it
};

enum class PhaseTableFormat : std::uint8_t {
    /// First line: number of energies, largest l, free text. Then for each energy a line with the energy in
    /// hartree (in rydberg when "Ry" stands in the first line) and lines of phase shifts in radians, in
    /// fields of 7 characters with 4 decimals that may touch.
    kLeed,
    /// First line: number of blocks an energy, one for each atom of the surface, and parameters. Then for
    /// each energy (hartree) a line with it and the blocks, each as in kLeed.
    kBlocks,
    /// Comma-separated with a title line that names the columns: "Ek_eV", phase shifts in degrees as "d0",
    /// "d1", ... and, if there, "element" and "Rmt_angstrom"; others are passed over. "#" begins a comment.
    kCsv,
};

/// Which part of a table is wanted.
struct PhaseTableChoice {
    PhaseTableFormat format = PhaseTableFormat::kLeed;
    int block = 1;        ///< of kBlocks, counted from 1
    std::string element;  ///< of a CSV table with such a column
};

/// Throws ZfError that names the file and what is wrong in it.
PhaseShiftTable ReadPhaseShiftTable(const std::string& path, const PhaseTableChoice& choice);

/// Degrees over l at an energy between the first and the last of the table, by cubic splines (or straight
/// lines) through phases whose jumps by 180 degrees have been taken out. Throws ZfError outside.
std::vector<double> PhasesAt(const PhaseShiftTable& table, double energy_eV, bool linear);

}  // namespace qvre
