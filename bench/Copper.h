#pragma once

#include <cstddef>
#include <cstdint>

#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ZfScatteringData.h"

// Photoemission from Cu(001) at 800 eV, made in code: the input of all benchmarks. k = 14.5 per angstrom, so
// the nearest neighbour (k R = 37) stands well outside the spheres on which waves are expanded, up to l size
// 25.
namespace copper {

/// Mean free path of the damping, m.
constexpr double kMeanFreePath_m = 15e-10;

/// Phase shifts that fall smoothly, and faster than exponentially: beyond k times the radius of an atom
/// hardly anything is scattered. The radius is that of touching spheres.
ZfPhaseShiftDocument PhaseShifts(std::int32_t lSize);

/// An fcc half space around an emitter in the third layer: as many whole shells by distance as come nearest
/// to `atoms`.
qvre::Cluster ClusterOf(std::size_t atoms);

/// The outgoing s and d waves of a p level, as often as told: parts of one line that differ in m.
std::vector<qvre::EmittedWave> EmittedWaves(std::size_t waves);

/// The same as a record ready for scattering, with one emitted wave.
ZfScatteringRecord Record(std::size_t atoms, const ZfPhaseShiftDocument& phaseShifts);

/// The same with waves on all atoms: what each scatters of the emitted s wave, taken as a plane wave at the
/// atom.
ZfScatteringData ScatteredData(std::size_t atoms, std::int32_t lSize);

/// Debye model at room temperature.
qvre::Fluctuation RoomTemperature();
ZfDebye Weights();

}  // namespace copper
