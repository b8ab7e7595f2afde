#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/Matrices.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "scattering/ZfVectorFreeElectron.h"

class ZfBarnXml;

/// One structure under one emitted wave. Entry i of the lists, labels and phase-shift indices speaks of the
/// same atom; entry 0 is the emitter.
struct ZfScatteringRecord {
    bool Exchange(ZfBarnXml& xml, const std::string& itemTag);  ///< false when the item is absent

    /// Two atoms of one kind, at the origin and at (0, 0, z): the emitter, with the table of its wave, and
    /// its scatterer. Energy in eV, z in metres; the thermal model is the one of the fluctuation document.
    /// Throws ZfError, also for a phase-shift index that no record can hold.
    void SetListScattererDimerOnZ(const ZfLmComplexTable& coefficients, double energy, double z,
                                  const std::string& atomName, const std::string& elementName,
                                  std::int32_t phaseShift, const qvre::Fluctuation& fluctuation,
                                  const ZfDebye& debye);

    ZfVectorFreeElectron ListScatterer;      ///< sources of the current scattering order; the result
    ZfVectorFreeElectron NextListScatterer;  ///< sources being built for the next order
    std::int32_t StIndex = 0;
    std::int32_t EWIndex = 0;
    double Ratio = 0.0;                   ///< weight of the emitted wave
    std::vector<std::string> atomLabels;  ///< name of the atom of each entry
    ZfCharMatrix phaseShiftIndex;         ///< vector: place of each entry's phase-shift record
};
