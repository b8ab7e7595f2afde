#pragma once

#include <optional>
#include <string>
#include <vector>

#include "prepare/cluster/CrystalCell.h"
#include "prepare/emission/PhotonEnergy.h"
#include "recipe/RecipeCases.h"
#include "recipe/RunDraft.h"
#include "run/RunStages.h"

namespace qvre {

/// The files of a calculation as far as they are planned, and what is to be done with them.
struct CasePlan {
    ScatteringRequest scattering;
    ImageRequest images;
    std::optional<CrystalCell> crystal;  ///< of a cluster that is made
    double fermi_eV = PhotoelectronEnergy().fermi_eV;
    double kinetic_eV = 0.0;  ///< of the waves; 0: several
    std::string choices;      ///< on which the scattering depends beside the settings of its sections
};

/// The first of some energies if one refraction serves them all, for they differ by less than a percent;
/// otherwise 0.
double CommonEnergy(const std::vector<double>& energies_eV);

/// Adds the steps of a case up to its scattered waves. Throws ZfError.
CasePlan AddCaseFiles(RunDraft& draft, const RecipeCase& one);

}  // namespace qvre
