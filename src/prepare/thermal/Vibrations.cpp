#include "prepare/thermal/Vibrations.h"

#include <QLoggingCategory>
#include <algorithm>
#include <cmath>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "input/ZfAtomName.h"
#include "scattering/ThermalModels.h"
#include "xml/ZfBarnXml.h"

namespace {

double DebyeTemperatureOf(const std::string& element, const VibrationRequest& request,
                          const DebyeTable& table) {
    const auto given = request.debyeTemperature_K.find(element);
    if (given != request.debyeTemperature_K.end()) return given->second;
    if (const auto listed = table.Find(element)) return *listed;
    throw ZfError(element + " has no Debye temperature in the table: give one, such as --debye " + element +
                  "=300 (in a recipe debye = { " + element + " = 300 })");
}

void CheckDebyeTemperatures(const VibrationRequest& request) {
    const std::vector<std::string>& elements = request.elements;
    for (const auto& [element, temperature_K] : request.debyeTemperature_K) {
        AtomicNumberOf(element);
        if (!(temperature_K > 0.0) || !std::isfinite(temperature_K))
            throw ZfError("The Debye temperature of " + element + " has to be above 0 kelvin");
        if (!elements.empty() && std::find(elements.begin(), elements.end(), element) == elements.end())
            throw ZfError("There is a Debye temperature for " + element +
                          ", which is not among the elements: leave it out");
    }
}

void AddDebyeTemperatures(ZfFluctuation& fluctuation, const VibrationRequest& request,
                          const DebyeTable& table) {
    if (request.elements.empty())
        throw ZfError("The Debye model needs the elements: give a cluster or name them");
    for (const std::string& element : request.elements) {
        AtomicNumberOf(element);
        fluctuation.DebyeElement_.push_back(element);
        fluctuation.DebyeTemperature_K_.push_back(DebyeTemperatureOf(element, request, table));
    }
}

/// While it lives, the debug log of Qt is silent: the weights go there as they are read.
class QuietDebugLog {
public:
    QuietDebugLog() : talked_(Log().isDebugEnabled()) { Log().setEnabled(QtDebugMsg, false); }
    QuietDebugLog(const QuietDebugLog&) = delete;
    QuietDebugLog& operator=(const QuietDebugLog&) = delete;
    ~QuietDebugLog() { Log().setEnabled(QtDebugMsg, talked_); }

private:
    static QLoggingCategory& Log() { return *QLoggingCategory::defaultCategory(); }
    bool talked_;
};

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

void CheckVibrations(const VibrationRequest& request) {
    if (!(request.temperature_K >= 0.0) || !std::isfinite(request.temperature_K))
        throw ZfError("The temperature has to be 0 kelvin or above");
    if (request.model == VibrationModel::Debye) CheckDebyeTemperatures(request);
}

ZfFluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table) {
    CheckVibrations(request);
    ZfFluctuation fluctuation;
    fluctuation.Temperature_K_ = request.temperature_K;
    fluctuation.IsUseUisoInCluster_ = request.model == VibrationModel::Cluster;
    fluctuation.IsUseUisoEinsteinModel_ = request.model == VibrationModel::Einstein;
    fluctuation.IsUseUisoDebyeModel_ = request.model == VibrationModel::Debye;
    if (request.model == VibrationModel::Debye) AddDebyeTemperatures(fluctuation, request, table);
    return fluctuation;
}

void SaveFluctuation(ZfFluctuation fluctuation, const std::string& path) {
    ZfBarnXml xml("w");
    ExchangeFluctuation(xml, fluctuation, "DocFluctuation");
    WriteWholeFile(path, xml.Document());
}

std::vector<std::string> ElementsOf(const ZfCluster& cluster) {
    std::vector<std::string> elements;
    for (const ZfStructure& structure : cluster.structures)
        for (const ZfAtom& atom : structure.atoms)
            if (std::find(elements.begin(), elements.end(), atom.atom) == elements.end())
                elements.push_back(atom.atom);
    return elements;
}

std::int32_t AtomicNumberOf(const std::string& element) {
    ZfAtomName name;
    try {
        name.SetName(element);
    } catch (const ZfError&) {
        name.SetAtomicNumber(0);
    }
    if (name.GetAtomicNumber() == 0)
        throw ZfError("There is no element \"" + element + "\": write symbols as in Cu, case counts");
    return name.GetAtomicNumber();
}

ZfDebye LoadAtomicWeights(const std::string& path) {
    const QuietDebugLog quiet;
    ZfDebye weights;
    weights.LoadAtomicWeight(ReadTextFile(path));
    return weights;
}

double ModelUiso(const ZfFluctuation& fluctuation, const ZfDebye& weights, const std::string& element) {
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
