#pragma once

#include <cmath>
#include <string>

#include "Inputs.h"
#include "Sources.h"
#include "scattering/ZfScatteringData.h"

inline EmittedWave EmittedSWave() {
    return WaveOf(kEnergy_eV, SWave(0, 0, 0, {3.0, 1.0}).A);
}

/// Phase shifts of 1, 2, ... radians for l = 0, 1, ..., and an atom of that radius, in angstrom.
inline PhaseShiftRecord PhaseShiftOf(const std::string& name, std::int32_t lSize, double radius) {
    PhaseShiftRecord record;
    record.AtomName = name;
    record.Ek_eV = kEnergy_eV;
    record.radial.LnX = {-30.0, std::log(radius * 1e-10)};
    record.scatteringFactors.SetVectorSize(lSize);
    for (std::int32_t l = 0; l < lSize; ++l)
        record.scatteringFactors.VectorAt(l) = std::polar(1.0, 2.0 * (l + 1.0)) - 1.0;
    return record;
}
