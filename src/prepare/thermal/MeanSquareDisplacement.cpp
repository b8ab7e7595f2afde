#include "prepare/thermal/MeanSquareDisplacement.h"

#include <algorithm>
#include <cmath>

#include "prepare/thermal/Elements.h"
#include "scattering/ThermalModels.h"

namespace qvre {

namespace {

/// t/(e^t - 1), integrated from 0 to x by Simpson's rule. Beyond t = 40 nothing is left to add.
double DebyeIntegral(double x) {
    constexpr int kIntervals = 1000;
    const double h = std::min(x, 40.0) / kIntervals;
    double sum = 0.0;
    for (int i = 0; i <= kIntervals; ++i) {
        const double t = i * h;
        const int weight = i == 0 || i == kIntervals ? 1 : i % 2 == 1 ? 4 : 2;
        sum += weight * (t > 0.0 ? t / std::expm1(t) : 1.0);
    }
    return sum * h / 3.0;
}

}  // namespace

double ModelUiso(const Fluctuation& fluctuation, const ZfDebye& weights, const std::string& element) {
    ZfVectorFreeElectron list;
    list.electrons.resize(1);
    list.electrons[0].atomicNumber = AtomicNumberOf(element);
    ApplyThermalModel(fluctuation, list, weights);
    return list.electrons[0].Uiso;
}

double DebyeIntegralUiso(double temperature_K, std::int32_t atomicNumber, double debyeTemperature_K,
                         const ZfDebye& weights) {
    const double theta = debyeTemperature_K;
    const double unit = weights.CalcUiso(theta, atomicNumber, theta);  // 3 hbar^2 / (M kB theta)
    const double t = temperature_K / theta;
    return unit * (0.25 + (t > 0.0 ? DebyeIntegral(1.0 / t) * t * t : 0.0));
}

double DebyeTemperatureOfUiso(double uiso, double temperature_K, std::int32_t atomicNumber,
                              const ZfDebye& weights) {
    return std::sqrt(weights.CalcUiso(temperature_K, atomicNumber, 1.0) / uiso);
}

}  // namespace qvre
