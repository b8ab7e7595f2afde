#pragma once

#include <cstdint>
#include <string>

#include "input/Fluctuation.h"
#include "input/ZfDebye.h"

// Mean square displacements U along one axis, m^2.

namespace qvre {

/// What a run gives an atom of the element, 0 where it keeps that of the cluster. Throws ZfError where the
/// run fails.
double ModelUiso(const Fluctuation& fluctuation, const ZfDebye& weights, const std::string& element);

/// By the whole Debye model, zero-point motion included:
///     U = 3 hbar^2 / (M kB theta) (phi(x)/x + 1/4),  x = theta/T,  phi(x) = 1/x int_0^x t/(e^t - 1) dt
/// (B. E. Warren, X-Ray Diffraction, section 11.3). A run takes its limit of small x, 3 hbar^2 / (M kB theta
/// x), which is too small by the factor 1 + x^2/36 - ...
double DebyeIntegralUiso(double temperature_K, std::int32_t atomicNumber, double debyeTemperature_K,
                         const ZfDebye& weights);

/// The Debye temperature in kelvin by which a run gives an atom the displacement `uiso` (m^2) at a
/// temperature above 0. It is smaller than that of the whole model.
double DebyeTemperatureOfUiso(double uiso, double temperature_K, std::int32_t atomicNumber,
                              const ZfDebye& weights);

}  // namespace qvre
