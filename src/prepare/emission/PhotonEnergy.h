#pragma once

#include <optional>
#include <string>

#include "prepare/atomic/BindingEnergies.h"
#include "prepare/emission/Emission.h"

namespace qvre {

/// Photon energy in eV: a number, or "Al", "Mg" and "Ag" for the K-alpha (silver: L-alpha) lines of X-ray
/// tubes. Throws ZfError for anything else.
double ParsePhotonEnergy(const std::string& text);

/// The energy of a photoelectron, given as such or by the photon that frees it.
struct PhotoelectronEnergy {
    double kinetic_eV = 0.0;           ///< inside the crystal, above the muffin-tin zero; 0: by the photon
    double photon_eV = 0.0;            ///< 0: the kinetic energy is given
    std::optional<double> binding_eV;  ///< below the Fermi level; otherwise from a table
    double fermi_eV = 10.0;            ///< Fermi level above the muffin-tin zero
    bool isRounded = true;             ///< that of a photon to 0.1 eV, for files; not along a fit
};

/// Throws ZfError unless one of kinetic and photon energy is given, and all that are given are in range.
void CheckEnergy(const PhotoelectronEnergy& energy);

/// Energy in eV of the level's orbital below the vacuum, calculated for the free atom.
double OrbitalBinding(const ScreenedAtom& atom, CoreField core, const CoreLevel& level);

/// Measured binding energy in eV below the Fermi level. Throws ZfError, with the calculated energy for
/// orientation, when the table has a gap there.
double MeasuredBinding(const BindingEnergies& table, const ScreenedAtom& atom, const CoreLevel& level);

}  // namespace qvre
