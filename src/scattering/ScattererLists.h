#pragma once

#include <vector>

#include "scattering/ZfScatteringData.h"

/// Appends the record of one structure and one emitted wave: its atoms as sources, the emitted wave on entry
/// 0, and the phase-shift record of every atom. The structure stays sorted. Throws ZfError.
ZfScatteringRecord& AddScatteringRecord(ZfScatteringData& data, qvre::Cluster& cluster, std::int32_t stIndex,
                                        const std::vector<qvre::EmittedWave>& waves, std::int32_t ewIndex,
                                        const ZfPhaseShiftDocument& phaseShifts);

/// Sorts the atoms along the first emitted wave if that is a plane wave, otherwise by `atomOrder`, and makes
/// them the entries of both lists.
void SetListFromCluster(ZfScatteringRecord& record, qvre::Cluster& cluster,
                        const std::vector<qvre::EmittedWave>& waves, std::int32_t stIndex,
                        std::int32_t atomOrder);

void SetEmittedWave(ZfScatteringRecord& record, const std::vector<qvre::EmittedWave>& waves,
                    std::int32_t ewIndex);

/// Finds phase shifts by exact energy and name. The index is a signed byte: a match at 128 or above counts as
/// none.
void SetPhaseShiftIndex(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts);

/// Layer by layer from the surface (high z) down, outward atoms of a layer first. Atom 0 keeps its plain
/// distance as key.
void SortAtomsByDepth(std::vector<qvre::ClusterAtom>& atoms);

/// By the component along the direction; an atom at the origin comes first wherever the wave goes.
void SortAtomsAlongWave(std::vector<qvre::ClusterAtom>& atoms, const ZfLDoubleMatrix& direction);
