#pragma once

#include <cmath>
#include <initializer_list>
#include <string>

#include "Sources.h"
#include "scattering/ZfScatteringData.h"

inline ClusterAtom AtomAt(const std::string& name, double x, double y, double z) {
    ClusterAtom atom;
    atom.name = name;
    atom.atom = "Cu";
    atom.SetPositionAngstrom(Vector3(x, y, z));
    return atom;
}

inline Cluster ClusterOf(std::initializer_list<ClusterAtom> atoms) {
    Cluster cluster;
    cluster.structures.resize(1);
    cluster.structures[0].atoms = atoms;
    return cluster;
}

inline EmittedWave EmittedSWave() {
    EmittedWave wave;
    wave.Ek = kEnergy_eV;
    wave.coeff.SetSize(1);
    wave.coeff.At(0, 0) = {3.0, 1.0};
    return wave;
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
