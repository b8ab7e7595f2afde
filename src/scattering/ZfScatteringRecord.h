#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Matrices.h"
#include "scattering/ZfVectorFreeElectron.h"
#include "xml/ZfBarnXml.h"

/// One structure under one emitted wave. Entry i of the lists, labels and phase-shift indices speaks of the
/// same atom; entry 0 is the emitter.
struct ZfScatteringRecord {
    bool Exchange(ZfBarnXml& xml, const std::string& itemTag);  ///< false when the item is absent

    ZfVectorFreeElectron ListScatterer;      ///< sources of the current scattering order; the result
    ZfVectorFreeElectron NextListScatterer;  ///< sources being built for the next order
    std::int32_t StIndex = 0;
    std::int32_t EWIndex = 0;
    double Ratio = 0.0;                   ///< weight of the emitted wave
    std::vector<std::string> atomLabels;  ///< name of the atom of each entry
    ZfCharMatrix phaseShiftIndex;         ///< vector: place of each entry's phase-shift record
};
