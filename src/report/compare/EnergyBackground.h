#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace qvre {

/// The smooth part B(E) of an intensity as a function of the energy, for chi = (I - B)/B: cross section,
/// transmission of the analyser, attenuation.
struct EnergyBackgroundModel {
    /// Degree in the energy of the polynomial of least squares. None: a smoothing spline f, the curve of the
    /// least sum (I - f)^2 + (range/2 pi)^4/step integral f''^2. It leaves what oscillates within the range:
    /// away from the ends, n periods in it keep about 1/(1 + n^4) of their size.
    std::optional<int> degree;

    std::string Text() const;  ///< "a polynomial of degree 3"
};

/// "spline" or a degree from 0 to 12. Throws ZfError for anything else.
EnergyBackgroundModel ParseEnergyBackground(const std::string& text);

/// Number of energies below which the background would take everything away.
std::size_t EnergiesNeeded(const EnergyBackgroundModel& model);

/// B at the energies, which rise and are as many as are needed.
std::vector<double> EnergyBackground(const EnergyBackgroundModel& model, const std::vector<double>& energy,
                                     const std::vector<double>& intensity);

/// chi = (I - B)/B at the energies; NaN where B is not positive. Throws ZfError for too few energies.
std::vector<double> EnergyModulation(const EnergyBackgroundModel& model, const std::vector<double>& energy,
                                     const std::vector<double>& intensity);

}  // namespace qvre
