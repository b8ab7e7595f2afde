#pragma once

#include <optional>
#include <vector>

#include "experiment/Light.h"
#include "foundation/ZfNotifyTerminate.h"
#include "prepare/cluster/EmitterShares.h"
#include "prepare/emission/DipoleSource.h"
#include "scattering/FarFieldDirections.h"
#include "scattering/SourceLimits.h"
#include "scattering/ZfScatteringData.h"

namespace qvre {

/// How the scattered waves of an input set become the intensity that leaves the sample.
struct CountingRequest {
    /// Of unit waves, which the light combines. None: the waves are emitted as they stand, each by itself.
    std::optional<DipoleSource> source;
    Light light;
    std::vector<EmitterShare> emitters;  ///< one a structure
    /// m, of the intensity; 0: no losses. The amplitude of an atom is multiplied by exp(-s/(2 length)), s
    /// being the way from the emitter to the atom and on to the surface; z is the normal.
    double inelasticMeanFreePath = 0.0;
    bool arePathsDamped = false;  ///< the way to the atoms is in the scattered waves already
    double meanFreePath = 0.0;    ///< m; 0: none; amplitudes by exp(-2 r/length) at r from the emitter
    SourceLimits limits;
};

/// By the index of each direction.
struct CountedIntensity {
    std::vector<double> pattern;
    std::vector<double> direct;  ///< of the direct waves alone, I0
};

/// Sums, in each direction, the amplitudes of the unit waves of a structure with those of the light's dipole
/// transitions; then adds up the intensities of sublevels, parts of the light and structures. The thermal
/// model has been applied to the records. `progress` runs from 0 to 1. The same for any number of threads.
/// Throws ZfError when the records are not those of the request.
CountedIntensity CountIntensity(const ZfScatteringData& data, const FarFieldDirections& directions,
                                const CountingRequest& request, ZfNotifyTerminate& notifier,
                                double& progress);

}  // namespace qvre
