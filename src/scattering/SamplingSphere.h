#pragma once

#include <cstdint>

namespace qvre {

/// Radius in metres of the outermost sphere on which the wave around an atom is sampled when it is expanded
/// to `lSize` partial waves at the kinetic energy (eV). A neighbour has to stand well outside: the expansion
/// of its wave converges slowly close to the sphere, and inside it is wrong. Throws ZfError for an l size or
/// an energy that is not positive.
double LastSamplingRadius(std::int32_t lSize, double energy_eV);

}  // namespace qvre
