#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <vector>

#include "ErrorText.h"
#include "Tables.h"
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

/// One with coefficients of no symmetry.
inline ZfFreeElectron FullSource(std::int32_t lSize, double x, double y, double z) {
    ZfFreeElectron source = SourceOf(lSize, x, y, z);
    FillTable(source.A, 1.0 + 1e10 * (x + 2 * y + 3 * z));
    return source;
}

inline ZfFreeElectron SWave(double x, double y, double z, std::complex<double> amplitude = 1.0) {
    ZfFreeElectron source = SourceOf(1, x, y, z);
    source.A.At(0, 0) = amplitude;
    return source;
}

inline ZfVectorFreeElectron ListOf(std::vector<ZfFreeElectron> sources) {
    ZfVectorFreeElectron list;
    list.electrons = std::move(sources);
    list.SetEnergy_eV(kEnergy_eV);
    return list;
}
