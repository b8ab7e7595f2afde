#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/ZfPhaseShiftDocument.h"

using namespace qvre;

// The inputs of a run, made by hand.

/// Angstrom.
inline ClusterAtom AtomAt(const std::string& name, double x, double y, double z,
                          const std::string& element = "Cu") {
    ClusterAtom atom;
    atom.name = name;
    atom.atom = element;
    atom.SetPositionAngstrom(Vector3(x, y, z));
    return atom;
}

inline Cluster ClusterOf(const std::vector<ClusterAtom>& atoms) {
    Cluster cluster;
    cluster.structures.resize(1);
    cluster.structures[0].atoms = atoms;
    return cluster;
}

inline EmittedWave WaveOf(double energy_eV, const ZfLmComplexTable& coefficients) {
    EmittedWave wave;
    wave.Ek = energy_eV;
    wave.coeff = coefficients;
    return wave;
}

/// Degrees, l = 0 up, of copper atoms.
inline PhaseShiftRecord PhaseShiftsOf(const std::string& name, double energy_eV,
                                      const std::vector<double>& degrees) {
    PhaseShiftRecord record;
    record.Ek_eV = energy_eV;
    record.AtomName = name;
    record.AtomElement = "Cu";
    record.PhaseShiftValue.SetVectorSize(static_cast<std::int32_t>(degrees.size()));
    std::copy(degrees.begin(), degrees.end(), record.PhaseShiftValue.Data());
    record.CalculateScatteringFactors();
    return record;
}
