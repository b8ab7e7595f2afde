#pragma once

#include <optional>
#include <string>
#include <vector>

#include "report/compare/EnergyBackground.h"
#include "run/RunStages.h"

// The stages of an energy scan, in place of images. They write their outputs whole or not at all, stop with
// ZfError when an interrupt asks them to, and return what the user should know, in lines.

namespace qvre {

/// One energy of a scan.
struct EnergyPointRequest {
    EmergenceRequest emergence;
    std::string wavesFile;                   ///< of one energy
    std::vector<PolarDirection> directions;  ///< outside
    double innerPotential_eV = 0.0;  ///< of the solid, by which an electron is slower outside; 0: no surface
};

/// Table of the intensities in the directions with their kinetic energy outside. At the surface the momentum
/// along it is kept: sin(theta_in) = sin(theta) sqrt(E/(E + V0)), and the solid angle widens with
/// E/(E + V0) cos(theta)/cos(theta_in).
void CalculateEnergyPoint(const EnergyPointRequest& request, const std::string& output);

/// The tables of one energy, whose intensities add up.
struct EnergyTables {
    std::vector<std::string> files;
    std::optional<double> photon_eV;
};

struct EnergyCurvesOutput {
    std::string table;    ///< of SaveEnergyCurves
    std::string picture;  ///< chi against the background
    std::string title;
};

/// Joins the tables of all energies, which rise, to curves.
std::string CollectEnergies(const std::vector<EnergyTables>& energies, const EnergyBackgroundModel& model,
                            const EnergyCurvesOutput& output);

}  // namespace qvre
