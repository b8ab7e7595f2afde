#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "foundation/ZfNotifyTerminate.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/ZfPhaseShiftDocument.h"
#include "scattering/StructureScattering.h"
#include "scattering/ZfScatteringRecord.h"

class ZfBarnXml;

namespace qvre {

/// The method by which an atom gathers the sources it sees; the values of the command line and of files. Full
/// scattering (multiple/FullRecords.h) has no order of atoms, and is none of Calculate's.
enum ScatteringMethod : std::int32_t { kSingle = 0, kSlowMulti = 1, kMulti = 2, kFull = 3 };

template <>
inline constexpr auto kWords<ScatteringMethod> = std::to_array<Word<ScatteringMethod>>(
    {{"MULTI", kMulti}, {"SLOWMULTI", kSlowMulti}, {"SINGLE", kSingle}, {"FULL", kFull}});

}  // namespace qvre

/// One scattering run: settings, live counters, and its records.
class ZfScatteringData {
public:
    /// Computes the wave of every atom, for each structure and emitted wave, and saves the file if one is
    /// named. Returns at once, without a file, when the notifier says so.
    void Calculate(ZfNotifyTerminate& notifier, qvre::Cluster& cluster,
                   const std::vector<qvre::EmittedWave>& waves, const ZfPhaseShiftDocument& phaseShifts);

    // One target atom each. Only the first pass (muIndex 0) is supported; throw ZfError otherwise. Entry 0,
    // the emitter, scatters nothing. Target n sees
    //   CalculateSingle: the emitter;
    //   CalculateSlowMulti: the emitter and every atom before it in the list;
    //   OneCalculateVer2: the emitter and those atoms before it that stand near the line from the origin to
    //   it.
    void CalculateSingle(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                         std::int32_t muIndex, std::int32_t atIndex);
    void CalculateSlowMulti(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                            std::int32_t muIndex, std::int32_t atIndex);
    void OneCalculateVer2(ZfScatteringRecord& record, const ZfPhaseShiftDocument& phaseShifts,
                          std::int32_t muIndex, std::int32_t atIndex);

    /// The outgoing wave of `target` under the sources of `seen`, a list in the frame of the target.
    void ScatterAtAtom(ZfFreeElectron& target, const ZfVectorFreeElectron& seen,
                       const qvre::PhaseShiftRecord& phaseShift);

    /// Expands the wave of `seen` around the origin: A = B = c/2 on `temporary`, from sum of c j_l Y_lm.
    void ExpandAroundOrigin(ZfFreeElectron& temporary, const ZfVectorFreeElectron& seen,
                            const qvre::PhaseShiftRecord& phaseShift);

    /// Outgoing table of the target, t_l A(l,m).
    void ApplyPhaseShift(ZfFreeElectron& target, const ZfFreeElectron& temporary,
                         const qvre::PhaseShiftRecord& phaseShift) const;

    bool Exchange(ZfBarnXml& xml);  ///< false without the root

    std::int32_t EWIndex = 0;
    std::int32_t EWCount = 0;
    std::int32_t EWStart = 0;
    std::int32_t StIndex = 0;
    std::int32_t StCount = 0;
    std::int32_t StStart = 0;
    std::int32_t AtIndex = 0;
    std::int32_t AtCount = 0;
    std::int32_t AtStart = 0;
    std::int32_t MuIndex = 0;
    std::int32_t MuCount = 0;
    std::int32_t MuStart = 0;
    std::int32_t Version = 0;          ///< a ScatteringMethod
    std::int32_t lastLevel = 0;        ///< final level of the last expansion
    std::int32_t currentEmitters = 0;  ///< sources of the last expansion
    double targetEnergy = 0.0;         ///< eV
    std::int32_t CurrSize_l_ = 0;      ///< l size of the last expansion
    double firstGroupKr = 0.0;         ///< k times the first radius of the last expansion
    bool runFlag = false;
    double EPS = 0.01;  ///< convergence tolerance of the expansions
    /// How near the tolerance an error has to be for its wave to be sampled instead of translated; infinite:
    /// always.
    double nearTie = qvre::kNearTie;
    std::string fileName;
    std::int32_t MultiScattering = 0;  ///< number of passes
    std::int32_t atomOrder = 0;        ///< 0 by distance, 1 by depth, other: as in the cluster
    std::vector<ZfScatteringRecord> ListScatteringData;

private:
    void PlanStructure(qvre::Cluster& cluster, const std::vector<qvre::EmittedWave>& waves,
                       const ZfPhaseShiftDocument& phaseShifts);
    void ScatterAtEntry(std::int32_t method, ZfScatteringRecord& record,
                        const ZfPhaseShiftDocument& phaseShifts, std::int32_t atIndex);
    void TellEmitters(std::int32_t count);

    qvre::ExpansionSettings settings_;
    /// All waves of the structure at hand, while Calculate runs: it holds references to what that was given.
    std::shared_ptr<qvre::StructureScattering> structure_;
};

/// Reads a scattered-wave file; one without the root leaves the data as it is.
void ZfLoadScatteredWave(ZfScatteringData& data, const std::string& path);
