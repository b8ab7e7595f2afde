#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "input/ZfPhaseShiftDocument.h"

namespace qvre {

constexpr std::size_t kMostPhaseShiftRecords = 128;

/// Where the list of phase shifts of an atom ends.
struct PhaseShiftLimits {
    std::int32_t lMax = 20;
    double cut_deg = 0.3;  ///< behind the last phase shift this far from a multiple of 180 nothing is kept
    /// Part of the nearest-neighbour distance within which the outermost sampling sphere of the expansion
    /// around an atom has to stay.
    double samplingPart = 0.8;
};

/// Phase shifts before they become a record.
struct PhaseShiftList {
    std::string name;
    std::string element;
    double energy_eV = 0.0;
    std::vector<double> degrees;      ///< over l
    double radius_angstrom = 0.0;     ///< of the muffin-tin sphere
    double neighbour_angstrom = 0.0;  ///< distance of the nearest neighbour
    std::string source;
    double outer_angstrom = 0.0;  ///< radius that the record tells; 0: that of the sphere
};

/// The number of l that the limits leave, at least 1. Where the sampling sphere is what limits, a warning
/// with the sizes, the radius and the distance is appended.
std::int32_t LimitedSize(const PhaseShiftList& list, const PhaseShiftLimits& limits,
                         std::vector<std::string>& warnings);

/// A record with the first `size` phase shifts. LnX is a logarithmic grid of 61 points from 1e-15 m to the
/// outer radius in metres, by which a calculation knows the size of the atom.
PhaseShiftRecord MakePhaseShiftRecord(const PhaseShiftList& list, std::int32_t size);

/// Throws ZfError for limits that no list has.
void CheckLimits(const PhaseShiftLimits& limits);

/// A record is found by its energy, to the last bit: throws ZfError for an energy that a file with its 6
/// digits would change. Calculations in memory have any.
void CheckDigits(const std::vector<double>& energies_eV);

/// Throws ZfError for an energy that is out of the range of the radial equation or stands twice, and for more
/// records than fit.
void CheckEnergies(const std::vector<double>& energies_eV, std::size_t species);

/// Writes the document as .xml_ph, whole or not at all. Throws ZfError.
void SavePhaseShifts(ZfPhaseShiftDocument& document, const std::string& path);

}  // namespace qvre
