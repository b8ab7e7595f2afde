#include "scattering/ThermalModels.h"

#include <cmath>
#include <map>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"

using namespace qvre;

namespace {

constexpr double kForceConstant = 70.0;  // N/m

std::map<std::int32_t, double> DebyeTemperatures(const Fluctuation& fluctuation) {
    std::map<std::int32_t, double> temperatures;
    for (std::size_t i = 0; i < fluctuation.DebyeElement_.size(); ++i) {
        ZfAtomName element;
        element.SetName(fluctuation.DebyeElement_[i]);
        temperatures.emplace(element.GetAtomicNumber(), CheckedAt(fluctuation.DebyeTemperature_K_, i));
    }
    return temperatures;
}

}  // namespace

void SetEinsteinModel(const Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& /*debye*/) {
    const double amplitude = std::sqrt(fluctuation.Temperature_K_ * kBoltzmann_J_K / kForceConstant);
    for (ZfFreeElectron& electron : list.electrons) electron.Uiso = amplitude * amplitude;
}

void SetDebyeModel(const Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye) {
    const std::map<std::int32_t, double> temperatures = DebyeTemperatures(fluctuation);
    for (ZfFreeElectron& electron : list.electrons) {
        if (electron.atomicNumber == 0) throw ZfError("SetDebyeModel():Atomic Number is zero");
        const auto found = temperatures.find(electron.atomicNumber);
        if (found == temperatures.end()) throw ZfError("SetDebyeModel():Atomic Number is not defined");
        electron.Uiso = debye.CalcUiso(fluctuation.Temperature_K_, electron.atomicNumber, found->second);
    }
}

namespace qvre {

ThermalModel ThermalModelOf(const Fluctuation& fluctuation) {
    if (fluctuation.IsUseUisoInCluster_) return ThermalModel::kCluster;
    if (fluctuation.IsUseUisoEinsteinModel_) return ThermalModel::kEinstein;
    return fluctuation.IsUseUisoDebyeModel_ ? ThermalModel::kDebye : ThermalModel::kNone;
}

void ApplyThermalModel(const Fluctuation& fluctuation, ZfVectorFreeElectron& list, const ZfDebye& debye) {
    const ThermalModel model = ThermalModelOf(fluctuation);
    if (model == ThermalModel::kEinstein) SetEinsteinModel(fluctuation, list, debye);
    if (model == ThermalModel::kDebye) SetDebyeModel(fluctuation, list, debye);
}

}  // namespace qvre
