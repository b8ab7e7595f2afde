#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "foundation/Matrices.h"
#include "foundation/ZfSThCalc.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

struct ScatteringPatternResult {
    double Ek_eV = 0.0;
    ZfLDoubleMatrix pattern;  ///< distance by angle
};

}  // namespace qvre

/// How one atom scatters the wave of another of its kind, over their distance and the polar angle: the far
/// field of a pair on the z axis, emitter at the origin, seen in the plane phi = 0.
///
/// The four tables (distance along the first index, angle along the second) sum over the emitted waves of one
/// energy, with A0 the direct and As the scattered amplitude, |A0|^2, |As|^2, |A0 + As|^2 and |i A0 + As|^2.
/// ProcessResult makes the pattern of them, by the operations and formulas of PatternTableOperations.h; those
/// that count on angles equal in cosine, and the blur, count on it whatever `equalAngles` says.
///
/// Distances must lie beyond the spheres of the expansion around the scatterer (k r about the number of its
/// phase shifts), as for every pattern. The state word counts the distances done, Result() is what it will
/// come to; a stop word leaves the tables unfinished. The five documents are not owned. All throw ZfError.
class ZfDocScatteringPatternMatrix final : public ZfSThCalc {
public:
    /// CalcPattern, unless the tables are kept, and ProcessResult, unless stopped.
    void Run() override;
    std::intptr_t Result() override { return stepCount; }

    /// Grids and tables, with the scattering of the calculators. Messages start with "CalcPattern():".
    void CalcPattern();

    /// Makes the pattern of copies of the tables: T = totalTable and Q = quadratureTable are
    ///   1. averaged over the energies of a Gaussian of standard deviation energyWidth, as wave numbers of
    ///      standard deviation k energyWidth / (2 Ek), which is dk/dE for E = hbar^2 k^2 / (2m);
    ///   2. blurred by blurSigma;
    ///   3. processed, and combined on demand: Process(T, processType), or with combineFlag
    ///      sqrt(Process(T, processType)^2 + Process(Q, secondProcessType)^2), the envelope of the
    ///      interference, which is free of the oscillations along the distance;
    ///   4. masked, from the equator or with searchMode from the first minimum of T beside the forward
    ///      direction.
    void ProcessResult();

    std::int32_t processType = 0;        ///< of the total table; see Process
    std::int32_t secondProcessType = 0;  ///< of the quadrature table, with combineFlag
    std::int32_t combineFlag = 0;
    std::int32_t maskType = 0;  ///< window of ApplyMask
    double energyWidth = 0.0;   ///< eV; 0: no smoothing
    double blurSigma = 0.0;     ///< degrees; 0: no blur
    ZfLDoubleMatrix directTable;
    ZfLDoubleMatrix scatteredTable;
    ZfLDoubleMatrix totalTable;
    ZfLDoubleMatrix quadratureTable;
    ZfScatteringData* PDocScattering_ = nullptr;  ///< its tolerance and its expansions serve
    const ZfPhaseShiftDocument* PDocScatteringPhaseShift_ = nullptr;
    const std::vector<qvre::EmittedWave>* PDocFinalState_ = nullptr;
    const qvre::Fluctuation* PDocFluctuation_ = nullptr;
    const ZfDebye* PDebye_ = nullptr;
    double distanceStart = 0.0;  ///< m
    double distanceStep = 0.0;   ///< m
    std::int32_t distanceCount = 0;
    std::int32_t keepTables = 0;            ///< do the processing only
    std::vector<bool> phaseShiftSelection;  ///< one bit a phase-shift record; one is set
    std::int32_t angleCount = 0;            ///< at least 2
    ZfLDoubleMatrix distances;              ///< vector, m
    ZfLDoubleMatrix angleCosines;           ///< vector: from -1 to 1, with equalAngles from 1 to -1
    std::int32_t normalisationType = 0;     ///< of Normalise
    std::int32_t equalAngles = 0;           ///< angles equal in theta rather than in cosine
    std::vector<qvre::ScatteringPatternResult> results;  ///< one
    std::vector<double> normalisationFactors;            ///< by distance, of the table normalised last
    std::int32_t searchMode = 0;                         ///< the mask starts at the first minimum

private:
    void FillTables();
    void CheckDocuments() const;
    std::size_t SelectedPhaseShift() const;
    void FillGrids();
    void AddEmittedWave(const qvre::EmittedWave& wave, std::size_t phaseShift);
    void AddPair(ZfScatteringRecord& pair, std::int32_t line);
    void CheckTables() const;
    void SmoothInEnergy(ZfLDoubleMatrix& total, ZfLDoubleMatrix& quadrature) const;
    ZfLDoubleMatrix Normalised(ZfLDoubleMatrix table);
    /// 0: normalised modulation function; 1: the table; 2: normalised table; 3: interference phase; 4:
    /// comparison with the last angle; 5 and 6: that comparison less 0 and less 3.
    ZfLDoubleMatrix Process(const ZfLDoubleMatrix& table, std::int32_t type);

    std::intptr_t stepCount = 0;
};
