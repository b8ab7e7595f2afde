#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "multiple/FullScattering.h"
#include "scattering/ZfScatteringData.h"

// Full scattering of the files of a calculation, stored as the ordered methods store theirs.

namespace qvre {

struct FullScatteringInputs {
    Cluster& cluster;  ///< is put into the order of the records
    const std::vector<EmittedWave>& waves;
    const ZfPhaseShiftDocument& phaseShifts;
    const Fluctuation* fluctuation = nullptr;  ///< none: the atoms are at rest
    const ZfDebye* weights = nullptr;          ///< for the fluctuation
};

/// What a user may ask for.
constexpr double kLeastTolerance = 1e-12;
constexpr double kLargestTolerance = 0.1;

struct FullScatteringSettings {
    double meanFreePath = 0.0;  ///< m; 0: none
    double tolerance = FullScatteringRequest().tolerance;
};

/// What one solution took: one a structure, and one an energy if its waves have several.
struct FullScatteringOutcome {
    std::size_t atoms = 0;
    std::size_t waves = 0;
    std::int32_t applications = 0;
    double residual = 0.0;  ///< the largest of the waves
    std::vector<PhaseShiftCut> cuts;
};

/// Follows the solutions: the estimate before each, then its progress, and the end of each structure but the
/// last. All may be empty.
struct FullScatteringReports {
    std::function<void(const FullScatteringEstimate&)> estimate;
    std::function<void(const FullScatteringProgress&)> progress;
    std::function<void()> structureDone;
};

/// Makes the records of all structures and waves. In each, entry 0 is the emitter with the emitted wave, so
/// that the direct wave is what it is under every method; entry 1 stands at the same place and holds what the
/// emitter scatters. Vibrations of the atoms are part of their t matrices (VibrationAverage.h), and their
/// Uiso is 0 in the records; that of the emitter stays, for the interference with the direct wave. EPS holds
/// the largest residual. Structures whose records the data of such a calculation bring along are not done
/// again. After an interruption there are no records. Throws ZfError.
std::vector<FullScatteringOutcome> ScatterInFull(ZfScatteringData& data, const FullScatteringInputs& inputs,
                                                 const FullScatteringSettings& settings,
                                                 ZfNotifyTerminate& notifier,
                                                 const FullScatteringReports& reports = {});

/// Makes the records of the method SINGLE, exactly and for any emitted wave: each atom scatters what comes
/// from the emitter. Vibrations and damping are left to the image. Throws ZfError.
void ScatterOnce(ZfScatteringData& data, const FullScatteringInputs& inputs);

/// A result of the ordered methods by the measure of full scattering.
struct OrderedResultMeasure {
    double missing = 0.0;  ///< of all that the atoms scatter, the largest of the waves: see MissingScattering
    double seconds = 0.0;  ///< that FULL would take for the structure
};

/// Of the first structure, at rest and without damping. None for what FULL does not solve, nor where the
/// measure alone would take more than some seconds.
std::optional<OrderedResultMeasure> MeasureOrderedResult(const ZfScatteringData& data,
                                                         const ZfPhaseShiftDocument& phaseShifts);

}  // namespace qvre
