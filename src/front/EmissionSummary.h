#pragma once

#include <string>

#include "prepare/emission/Emission.h"

// Lines that tell of an emission, as `qvre emit` prints them.

namespace qvre {

std::string EnergyText(double kinetic_eV);
std::string ZeroText(double zero_eV);               ///< of the muffin-tin zero
std::string ChannelText(const Emission& emission);  ///< radial integrals, phases, beta, the orbital

/// The photoionisation cross section of the level; empty where the photon does not lift its orbital.
std::string CrossSectionText(const EmissionRequest& request, double photon_eV);

}  // namespace qvre
