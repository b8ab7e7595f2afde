#include "prepare/thermal/Vibrations.h"

#include <algorithm>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/thermal/Elements.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

double DebyeTemperatureOf(const std::string& element, const VibrationRequest& request,
                          const DebyeTable& table) {
    const auto given = request.debyeTemperature_K.find(element);
    if (given != request.debyeTemperature_K.end()) return given->second;
    if (const auto listed = table.Find(element)) return *listed;
    throw ZfError(element + " has no Debye temperature in the table: give one as debye, such as " + element +
                  " = 300");
}

void CheckDebyeTemperatures(const VibrationRequest& request) {
    const std::vector<std::string>& elements = request.elements;
    for (const auto& [element, temperature_K] : request.debyeTemperature_K) {
        AtomicNumberOf(element);
        CheckDebyeTemperature(element, temperature_K);
        if (!elements.empty() && std::find(elements.begin(), elements.end(), element) == elements.end())
            throw ZfError("There is a Debye temperature for " + element +
                          ", which is not among the elements: leave it out");
    }
}

void AddDebyeTemperatures(Fluctuation& fluctuation, const VibrationRequest& request,
                          const DebyeTable& table) {
    if (request.elements.empty())
        throw ZfError("The Debye model needs the elements: give a cluster or name them");
    for (const std::string& element : request.elements) {
        AtomicNumberOf(element);
        fluctuation.DebyeElement_.push_back(element);
        fluctuation.DebyeTemperature_K_.push_back(DebyeTemperatureOf(element, request, table));
    }
}

}  // namespace

void CheckTemperature(double temperature_K) {
    if (!(temperature_K >= 0.0 && temperature_K <= kHighestTemperature_K))
        throw ZfError("The temperature has to be from 0 to " + DoubleToText(kHighestTemperature_K) +
                      " kelvin, not " + DoubleToText(temperature_K));
}

void CheckDebyeTemperature(const std::string& element, double temperature_K) {
    if (!(temperature_K > 0.0 && temperature_K <= kHighestTemperature_K))
        throw ZfError("The Debye temperature of " + element + " has to be above 0 and up to " +
                      DoubleToText(kHighestTemperature_K) + " kelvin, not " + DoubleToText(temperature_K));
}

void CheckVibrations(const VibrationRequest& request) {
    CheckTemperature(request.temperature_K);
    if (request.model == VibrationModel::kDebye) CheckDebyeTemperatures(request);
}

Fluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table) {
    CheckVibrations(request);
    Fluctuation fluctuation;
    fluctuation.Temperature_K_ = request.temperature_K;
    fluctuation.IsUseUisoInCluster_ = request.model == VibrationModel::kCluster;
    fluctuation.IsUseUisoEinsteinModel_ = request.model == VibrationModel::kEinstein;
    fluctuation.IsUseUisoDebyeModel_ = request.model == VibrationModel::kDebye;
    if (request.model == VibrationModel::kDebye) AddDebyeTemperatures(fluctuation, request, table);
    return fluctuation;
}

void SaveFluctuation(Fluctuation fluctuation, const std::string& path) {
    ZfBarnXml xml("w");
    ExchangeFluctuation(xml, fluctuation, "DocFluctuation");
    WriteWholeFile(path, xml.Document());
}

}  // namespace qvre
