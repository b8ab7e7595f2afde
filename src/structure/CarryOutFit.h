#pragma once

#include <string>

#include "fit/LocalFit.h"
#include "structure/FitPlan.h"

namespace qvre {

struct FitOptions {
    std::string recipe;
    std::string folder;  ///< of the results
    FitChoices choices;
    bool simulates = false;   ///< makes the measurements up
    bool repeatsAll = false;  ///< forgets what the folder has of a former fit
};

/// Fits a recipe and leaves all in the folder (FitFiles); tells on standard output what it does and, last,
/// what came out. A fit that was stopped goes on where it was. Returns why it ended. Throws ZfError, also
/// when the folder has the fit of another problem, and Interruption.
FitStop CarryOutFit(const FitOptions& options);

}  // namespace qvre
