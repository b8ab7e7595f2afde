#pragma once

#include <optional>
#include <string>
#include <vector>

#include "recipe/RecipeInputs.h"
#include "recipe/RecipeTable.h"
#include "report/compare/EnergyComparison.h"
#include "run/RunStages.h"

namespace qvre {

/// The section [energies]: intensities in some directions as functions of the energy, in place of images.
struct RecipeEnergies {
    /// Of the setting in [emission] that the section stands for.
    const char* Key() const { return byPhotons ? "photon" : "kinetic"; }
    /// The value of that setting: inside the solid a kinetic energy is larger.
    double Setting(double energy_eV) const;

    bool byPhotons = false;
    std::vector<double> values_eV;           ///< rising; kinetic energies are those outside
    std::vector<PolarDirection> directions;  ///< outside
    double innerPotential_eV = 0.0;
    EnergyBackgroundModel background;
    std::string settings;  ///< those that the intensities of one energy depend on, as text
};

/// None without the section. Throws ZfError.
std::optional<RecipeEnergies> ReadEnergies(RecipeTable recipe);

/// Refuses what a recipe with energies leaves out: energies that stand elsewhere, and settings of images.
void CheckBesideEnergies(const RecipeTable& recipe, const RecipeEnergies& energies);

/// The section [compare] of a recipe with energies.
struct EnergyCompareSection {
    std::vector<MeasuredEnergyCurve> measured;  ///< empty: nothing is compared
    EnergyComparisonSettings settings;
};

/// `measuredFile`, if there is one, takes the place of the file that the section names. Refuses measured
/// curves that cannot be compared. Throws ZfError.
EnergyCompareSection ReadEnergyCompare(RecipeTable section, const RecipeEnergies& energies,
                                       const RecipeFolder& place, const std::string& measuredFile);

}  // namespace qvre
