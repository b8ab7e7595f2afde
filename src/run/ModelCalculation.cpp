#include "run/ModelCalculation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/ZfNotifyTerminate.h"
#include "pattern/ZfDocPattern.h"
#include "run/RunProgress.h"
#include "scattering/ThermalModels.h"
#include "scattering/ZfFreeElectron.h"

namespace qvre {

namespace {

class InterruptPoll final : public ZfNotifyTerminate {
public:
    bool IsTerminated() override { return InterruptRequest::IsPending(); }
};

/// Plane waves come from outside, and are left to the calculators of the files.
bool HasPlaneWave(const std::vector<EmittedWave>& waves) {
    return std::any_of(waves.begin(), waves.end(), [](const EmittedWave& wave) { return wave.IsPlaneWave; });
}

}  // namespace

ZfScatteringData ScatterModel(ModelInputs inputs, const ModelMethod& method) {
    InterruptPoll poll;
    ZfScatteringData data;
    FullScatteringInputs all = {inputs.cluster, inputs.waves, inputs.phaseShifts};
    if (method.method == kFull) {
        all.fluctuation = &inputs.fluctuation;
        all.weights = &inputs.weights;
        ScatterInFull(data, all, method.full, poll);
    } else if (method.method == kSingle && !HasPlaneWave(inputs.waves)) {
        ScatterOnce(data, all);
    } else {
        data.Version = method.method;
        data.MultiScattering = 1;
        data.Calculate(poll, inputs.cluster, inputs.waves, inputs.phaseShifts);
    }
    InterruptRequest::ThrowIfPending();
    return data;
}

ZfScatteringData WithVibrations(ZfScatteringData data, const ModelInputs& inputs) {
    for (ZfScatteringRecord& record : data.ListScatteringData)
        ApplyThermalModel(inputs.fluctuation, record.ListScatterer, inputs.weights);
    return data;
}

double LargestMomentum(const Cluster& cluster, double kinetic_eV, double acceptance_deg) {
    double squaredRadius_m2 = 0.0;
    for (const Structure& structure : cluster.structures)
        for (const ClusterAtom& atom : structure.atoms)
            squaredRadius_m2 = std::max(squaredRadius_m2, static_cast<double>(NormSquared(atom.position)));
    ZfFreeElectron electron;
    electron.SetEnergy_eV(kinetic_eV);
    const double reached = electron.k * std::sqrt(squaredRadius_m2);
    return acceptance_deg > 0.0 ? std::min(reached, 180.0 / (2.0 * acceptance_deg)) : reached;
}

CountedIntensity CountModel(const ZfScatteringData& data, const FarFieldDirections& directions,
                            const CountingRequest& request) {
    InterruptPoll poll;
    double done = 0.0;
    CountedIntensity counted = CountIntensity(data, directions, request, poll, done);
    InterruptRequest::ThrowIfPending();
    return counted;
}

FarFieldDirections DirectionsOf(const ZfSphericalMapping& mapping) {
    FarFieldDirections directions;
    for (std::int64_t i = 0; i < mapping.pixelWeight.Count(); ++i)
        if (mapping.pixelWeight.Data()[i] != 0.0)
            directions.Add(static_cast<std::size_t>(i), mapping.directionX.Data()[i],
                           mapping.directionY.Data()[i], mapping.directionZ.Data()[i]);
    directions.Order();
    return directions;
}

MapDirections::MapDirections(SphereMap map, double resolution_deg) : map_(map) {
    const std::unique_ptr<ZfDocPattern> pattern = MakePattern(map, resolution_deg);
    pattern->BuildMapping();
    directions = DirectionsOf(pattern->mapping);
    width_ = pattern->mapping.pixelWeight.ColSize;
    height_ = pattern->mapping.pixelWeight.RowSize;
}

SphereImage MapDirections::Image(std::vector<double> values) const {
    values.resize(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_));
    return {map_, width_, height_, std::move(values)};
}

}  // namespace qvre
