#include "prepare/attenuation/MeanFreePath.h"

#include <fmt/format.h>

#include <cmath>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr double kRestEnergy_eV = 510998.95;  // of the electron
constexpr double kLargestGap_eV = 30.0;
constexpr double kMeaningless_eV =
    30.0;  // below, the formula falls with the energy, and electrons go further
}  // namespace

void CheckMeanFreePath(const MeanFreePathRequest& request) {
    constexpr double kShortest_angstrom = 0.5;
    constexpr double kLongest_angstrom = 1e5;
    if (request.length_angstrom &&
        !(*request.length_angstrom >= kShortest_angstrom && *request.length_angstrom <= kLongest_angstrom))
        throw ZfError(fmt::format("The mean free path has to lie between {:g} and {:g} angstrom, not {:g}",
                                  kShortest_angstrom, kLongest_angstrom, *request.length_angstrom));
    if (!(request.gap_eV >= 0.0 && request.gap_eV <= kLargestGap_eV))
        throw ZfError(fmt::format("The band gap has to lie between 0 and {:g} eV, not {:g}", kLargestGap_eV,
                                  request.gap_eV));
}

double Tpp2m_angstrom(const SolidDensity& solid, double gap_eV, double energy_eV) {
    if (!(energy_eV >= kMeaningless_eV))
        throw ZfError(fmt::format(
            "TPP-2M has no meaning at {:g} eV, it holds from {:g} eV on: give the mean free path as a length",
            energy_eV, kLeastTppEnergy_eV));
    const double rho = solid.density_g_cm3;
    const double u = solid.valenceElectrons * rho / solid.mass;
    const double plasmon2 = 28.8 * 28.8 * u;  // eV^2
    const double beta = -0.10 + 0.944 / std::sqrt(plasmon2 + gap_eV * gap_eV) + 0.069 * std::pow(rho, 0.1);
    const double gamma = 0.191 / std::sqrt(rho);
    const double c = 1.97 - 0.91 * u;
    const double d = 53.4 - 20.8 * u;
    // m v^2 / 2 of the speed of the electron over its kinetic energy
    const double alpha =
        (1.0 + 0.5 * energy_eV / kRestEnergy_eV) / std::pow(1.0 + energy_eV / kRestEnergy_eV, 2);
    const double slow = alpha * energy_eV;
    const double losses =
        plasmon2 * (beta * std::log(gamma * slow) - c / energy_eV + d / (energy_eV * energy_eV));
    if (!(losses > 0.0))
        throw ZfError(
            fmt::format("TPP-2M gives no mean free path at {:g} eV in this solid: give a length", energy_eV));
    return slow / losses;
}

double MeanFreePath_angstrom(const MeanFreePathRequest& request, const SolidDensity& solid,
                             double energy_eV) {
    CheckMeanFreePath(request);
    return request.length_angstrom ? *request.length_angstrom
                                   : Tpp2m_angstrom(solid, request.gap_eV, energy_eV);
}

std::string MeanFreePathWarning(const MeanFreePathRequest& request, double energy_eV) {
    if (request.length_angstrom || (energy_eV >= kLeastTppEnergy_eV && energy_eV <= kLargestTppEnergy_eV))
        return "";
    return fmt::format("TPP-2M holds from {:g} to {:g} eV, and {:g} eV lies outside", kLeastTppEnergy_eV,
                       kLargestTppEnergy_eV, energy_eV);
}

std::string MeanFreePathText(const MeanFreePathRequest& request, const SolidDensity& solid,
                             double energy_eV) {
    const double length = MeanFreePath_angstrom(request, solid, energy_eV);
    if (request.length_angstrom) return fmt::format("{:g} angstrom, as given", length);
    return fmt::format(
        "{:.1f} angstrom at {:g} eV (TPP-2M: {:.3g} g/cm^3, {:.4g} valence electrons in {:.5g} u, gap {:g} "
        "eV)",
        length, energy_eV, solid.density_g_cm3, solid.valenceElectrons, solid.mass, request.gap_eV);
}

}  // namespace qvre
