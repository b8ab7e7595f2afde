#pragma once

#include <string>

#include "prepare/atomic/BindingEnergies.h"
#include "prepare/emission/Emission.h"

/// Photon energy in eV: a number, or "Al", "Mg" and "Ag" for the K-alpha (silver: L-alpha) lines of X-ray
/// tubes. Throws ZfError for anything else.
double ParsePhotonEnergy(const std::string& text);

/// Energy in eV of the level's orbital below the vacuum, calculated in Slater's field of the free atom.
double OrbitalBinding(const ScreenedAtom& atom, const CoreLevel& level);

/// Measured binding energy in eV below the Fermi level. Throws ZfError, with the calculated energy for
/// orientation, when the table has a gap there.
double MeasuredBinding(const BindingEnergies& table, const ScreenedAtom& atom, const CoreLevel& level);
