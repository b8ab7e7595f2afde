#pragma once

#include <cstdint>
#include <vector>

#include "experiment/CountedIntensity.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "input/ZfPhaseShiftDocument.h"
#include "multiple/FullRecords.h"
#include "pattern/ZfSphericalMapping.h"
#include "report/sphere/SphereImage.h"
#include "scattering/FarFieldDirections.h"
#include "scattering/ZfScatteringData.h"

// A calculation in memory, as a run makes it of files. Nothing is shown on the way; an interrupt throws
// Interruption. The functions may be called from several threads.

namespace qvre {

/// What an input set has in its files.
struct ModelInputs {
    Cluster cluster;
    std::vector<EmittedWave> waves;
    ZfPhaseShiftDocument phaseShifts;
    Fluctuation fluctuation;
    ZfDebye weights;
};

/// How the waves are scattered.
struct ModelMethod {
    ScatteringMethod method = kFull;
    FullScatteringSettings full;  ///< of FULL
};

/// The scattered waves; of FULL, vibrations are part of them. Throws ZfError.
ZfScatteringData ScatterModel(ModelInputs inputs, const ModelMethod& method);

/// The waves of another method with the vibrations of the inputs. Throws ZfError.
ZfScatteringData WithVibrations(ZfScatteringData data, const ModelInputs& inputs);

/// The largest angular momentum in which waves interfere that come from as far as the cluster reaches, k
/// times that, as far as an analyser of this half angle of acceptance (degrees; 0: none) shows it: pi over
/// the full angle.
double LargestMomentum(const Cluster& cluster, double kinetic_eV, double acceptance_deg);

/// The intensities that leave the sample. Throws ZfError.
CountedIntensity CountModel(const ZfScatteringData& data, const FarFieldDirections& directions,
                            const CountingRequest& request);

/// The pixels inside a map, by their place in a plane.
FarFieldDirections DirectionsOf(const ZfSphericalMapping& mapping);

/// The pixels of a map as directions.
class MapDirections {
public:
    MapDirections(SphereMap map, double resolution_deg);

    /// Numbers that belong to the directions, as an image.
    SphereImage Image(std::vector<double> values) const;

    FarFieldDirections directions;

private:
    SphereMap map_;
    std::int32_t width_ = 0;
    std::int32_t height_ = 0;
};

}  // namespace qvre
