#pragma once

#include <complex>
#include <cstdint>
#include <initializer_list>

#include "ErrorText.h"
#include "scattering/ZfVectorFreeElectron.h"

// What most tests of waves are made of.

constexpr double kEnergy_eV = 560.0;

/// An outgoing source with zero coefficients.
inline ZfFreeElectron SourceOf(std::int32_t lSize, double x, double y, double z) {
    ZfFreeElectron source;
    source.A.SetSize(lSize);
    source.position = Vector3(x, y, z);
    source.SetEnergy_eV(kEnergy_eV);
    return source;
}

inline ZfFreeElectron SWave(double x, double y, double z, std::complex<double> amplitude = 1.0) {
    ZfFreeElectron source = SourceOf(1, x, y, z);
    source.A.At(0, 0) = amplitude;
    return source;
}

inline ZfVectorFreeElectron ListOf(std::initializer_list<ZfFreeElectron> sources) {
    ZfVectorFreeElectron list;
    list.electrons = sources;
    list.SetEnergy_eV(kEnergy_eV);
    return list;
}
