#pragma once

#include <string>
#include <vector>

#include "input/LmTable.h"

class ZfBarnXml;

namespace qvre {

/// What leaves the emitter: an outgoing wave by its coefficients, or a plane wave. Several waves of one file
/// are the incoherent parts of one emission: their intensities add.
struct EmittedWave {
    bool Exchange(ZfBarnXml& xml, const std::string& itemTag);  ///< false when the item is absent

    double Ek = 1000.0;      ///< kinetic energy, eV
    ZfLmComplexTable coeff;  ///< coefficients of h1_l Y_lm
    double Ratio = 1.0;      ///< weight; carried with the scattered wave
    bool IsPlaneWave = false;
    double PlaneWaveBeta_deg = 0.0;   ///< polar angle of the plane wave
    double PlaneWaveGamma_deg = 0.0;  ///< its azimuth
};

/// The document of an emitted-wave file. False without its root, and `waves` stays.
bool ExchangeEmittedWaves(ZfBarnXml& xml, std::vector<EmittedWave>& waves);

}  // namespace qvre

void ZfLoadEmittedWave(std::vector<qvre::EmittedWave>& waves, const std::string& path);
