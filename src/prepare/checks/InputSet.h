#pragma once

#include <set>
#include <string>
#include <vector>

#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "prepare/thermal/DebyeTable.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// The documents of one run. Parts that are null are not checked, nor is what needs them.
struct InputSet {
    const Cluster* cluster = nullptr;
    const std::vector<EmittedWave>* waves = nullptr;
    const ZfPhaseShiftDocument* phaseShifts = nullptr;
    const Fluctuation* fluctuation = nullptr;
    const ZfDebye* weights = nullptr;
    ScatteringMethod method = kMulti;
    const DebyeTable* debye = nullptr;  ///< by which a U at low temperature is large enough
    std::vector<std::string> files{};   ///< that the documents were loaded from; none: they were made
    /// Elements whose U was given: the Debye temperatures of the fluctuation were made from it.
    std::set<std::string> displaced{};
};

enum class Severity {
    kNote,     ///< worth knowing
    kWarning,  ///< the run is slow, or its result doubtful
    kMisfit    ///< the run fails, or its result is wrong without a word
};

struct InputFinding {
    Severity severity = Severity::kNote;
    std::string what;
    std::string remedy;
};

using InputFindings = std::vector<InputFinding>;

}  // namespace qvre
