#pragma once

#include <memory>
#include <vector>

#include "crystal/ZfCrystal.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "pattern/ZfDocPattern.h"
#include "pattern/ZfDocPatternNano.h"
#include "pattern/ZfDocScatteringPatternMatrix.h"
#include "scattering/ZfScatteringData.h"

/// Everything a run works on: inputs, scattering data, pattern objects and tables. One for the process,
/// reached only through Instance() and never destroyed.
class ZfCalcDocument {
public:
    /// Creates the document on first use. Not called in parallel loops: it takes no lock.
    static ZfCalcDocument& Instance();

    ZfCalcDocument(const ZfCalcDocument&) = delete;
    ZfCalcDocument& operator=(const ZfCalcDocument&) = delete;

    qvre::Cluster cluster;
    std::vector<qvre::EmittedWave> emittedWaves;
    std::unique_ptr<ZfPhaseShiftDocument> phaseShifts;
    std::unique_ptr<ZfScatteringData> scatteringData;
    ZfDocPattern_Diana patternDiana;
    ZfDocPattern_EquidistantCylindrical patternCylindrical;
    ZfDocPattern_AzimuthalEquidistant patternAzimuthal;
    ZfDocPattern_StereoProjection patternStereo;
    ZfDocPattern_Orthographic patternOrthographic;
    ZfDocPattern_OneDimensional patternOneDimensional;
    ZfDocScatteringPatternMatrix scatteringPatternMatrix;  ///< without its documents
    ZfCrystalTable crystalPresets;
    ZfDocPatternNano patternNano;
    ZfDebye debye;
    qvre::Fluctuation fluctuation;

private:
    ZfCalcDocument();
    ~ZfCalcDocument() = default;
};
