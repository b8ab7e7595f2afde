#pragma once

#include <string>
#include <vector>

#include "report/compare/EnergyBackground.h"

namespace qvre {

/// Intensity in one direction of emission as a function of the energy. Entry i of every list belongs to
/// energy i.
struct EnergyCurve {
    std::string Direction() const;  ///< "θ 30°, φ 45°"

    double theta_deg = 0.0;
    double phi_deg = 0.0;
    std::vector<double> kinetic_eV;  ///< rising
    std::vector<double> photon_eV;   ///< empty where kinetic energies were asked for
    std::vector<double> intensity;
    std::vector<double> direct;      ///< I0
    std::vector<double> modulation;  ///< (I - I0)/I0; NaN where I0 is faint
    std::vector<double> chi;         ///< against a background over the energy; NaN where it is not positive
};

/// Whether two directions are the same, to the digits of tables; along the normal the azimuth does not count.
bool IsSameDirection(double thetaA_deg, double phiA_deg, double thetaB_deg, double phiB_deg);

/// Comma-separated table with the columns kinetic, photon (if there is one), theta, phi, I, I0, chi_I0, chi,
/// in eV and degrees, one direction after the other; chi that is not a number is an empty field.
void SaveEnergyCurves(const std::vector<EnergyCurve>& curves, const std::string& path);

/// The same of a table, without modulation and chi. Throws ZfError "path: reason".
std::vector<EnergyCurve> LoadEnergyCurves(const std::string& path);

}  // namespace qvre
