#pragma once

#include <string>
#include <vector>

#include "input/EmittedWave.h"

namespace qvre {

/// Energies in eV from texts such as "560" and "200:1500:100" (first, last, step), in their order. A step's
/// energies are those of its decimal numbers, free of the rounding of a sum. Throws ZfError.
std::vector<double> ParseEnergies(const std::vector<std::string>& texts);

/// The same from `first` by `step` up to `last` at the most; first <= last, and the step is above 0.
std::vector<double> EnergyRange(double first, double last, double step);

/// The kinetic energies of waves, each once, in their order.
std::vector<double> EnergiesOfWaves(const std::vector<EmittedWave>& waves);

/// The same of an emitted-wave file. Throws ZfError without any.
std::vector<double> EnergiesOfWaves(const std::string& path);

}  // namespace qvre
