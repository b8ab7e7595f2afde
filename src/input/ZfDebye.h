#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// Atomic weights by atomic number, and the mean square displacement that follows from a Debye temperature.
class ZfDebye {
public:
    /// Lines of number, two further fields and weight, numbered 1, 2, 3, ... without gaps; throws ZfError
    /// otherwise. Writes the weights to the debug log.
    void LoadAtomicWeight(std::string_view text);

    double GetAtoicWeight(std::int32_t atomicNumber) const;  ///< throws ZfError outside the table

    /// High-temperature limit of the Debye model, U = 3 hbar^2 T / (M kB theta_D^2), in square metres;
    /// exactly 0 at T = 0 and for a Debye temperature of 0 or below (B. E. Warren, X-Ray Diffraction,
    /// section 11.3). Throws ZfError when no weights are loaded.
    double CalcUiso(double temperature_K, std::int32_t atomicNumber, double debyeTemperature_K) const;

    std::vector<double> weights;  ///< entry 0 is a placeholder
};
