#pragma once

#include <string>
#include <vector>

#include "input/ZfCluster.h"
#include "input/ZfDebye.h"
#include "input/ZfEmittedWave.h"
#include "input/ZfFluctuation.h"
#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ZfScatteringData.h"

/// The documents of one run. Parts that are null are not checked, nor is what needs them.
struct InputSet {
    const ZfCluster* cluster = nullptr;
    const std::vector<ZfEmittedWave>* waves = nullptr;
    const ZfPhaseShiftDocument* phaseShifts = nullptr;
    const ZfFluctuation* fluctuation = nullptr;
    const ZfDebye* weights = nullptr;
    ZfScatteringMethod method = kMulti;
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
