#include "prepare/thermal/Vibrations.h"

#include <algorithm>

#include "foundation/ReplacedFile.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/thermal/Elements.h"
#include "prepare/thermal/MeanSquareDisplacement.h"
#include "xml/ZfBarnXml.h"

namespace qvre {

namespace {

double TableTemperature(const std::string& element, const DebyeTable& table) {
    if (const auto listed = table.Find(element)) return *listed;
    throw ZfError(element + " has no Debye temperature in the table: give one as debye, such as " + element +
                  " = 300, or uiso, such as " + element + " = 0.007");
}

/// By the formula of a run, which makes U = 0 at 0 K of any.
double DebyeTemperatureOf(const std::string& element, const VibrationRequest& request,
                          const DebyeTable& table, const ZfDebye& weights) {
    const double t = request.temperature_K;
    const std::int32_t number = AtomicNumberOf(element);
    const auto given = request.debyeTemperature_K.find(element);
    if (given != request.debyeTemperature_K.end()) return given->second;
    const auto uiso = request.uiso_angstrom2.find(element);
    if (uiso != request.uiso_angstrom2.end())
        return DebyeTemperatureOfUiso(uiso->second * 1e-20, t, number, weights);
    const double theta = TableTemperature(element, table);
    if (t == 0.0) return theta;
    return DebyeTemperatureOfUiso(DebyeIntegralUiso(t, number, theta, weights), t, number, weights);
}

void CheckElement(const std::string& element, const VibrationRequest& request, const char* what) {
    AtomicNumberOf(element);
    const std::vector<std::string>& elements = request.elements;
    if (!elements.empty() && std::find(elements.begin(), elements.end(), element) == elements.end())
        throw ZfError(std::string("There is a ") + what + " for " + element +
                      ", which is not among the elements: leave it out");
}

void CheckDebyeTemperatures(const VibrationRequest& request) {
    for (const auto& [element, temperature_K] : request.debyeTemperature_K) {
        AtomicNumberOf(element);
        CheckDebyeTemperature(element, temperature_K);
        CheckElement(element, request, "Debye temperature");
    }
}

void CheckDisplacement(const std::string& element, double uiso) {
    if (!(uiso >= kLeastUiso_angstrom2 && uiso <= kLargestUiso_angstrom2))
        throw ZfError("U of " + element + " has to lie between " + DoubleToText(kLeastUiso_angstrom2) +
                      " and " + DoubleToText(kLargestUiso_angstrom2) +
                      " square angstrom (B = 8 pi^2 U), not " + DoubleToText(uiso));
}

void CheckDisplacements(const VibrationRequest& request) {
    for (const auto& [element, uiso] : request.uiso_angstrom2) {
        CheckElement(element, request, "displacement");
        CheckDisplacement(element, uiso);
        if (request.debyeTemperature_K.contains(element))
            throw ZfError(element + " has a displacement and a Debye temperature: give one of them");
        if (request.temperature_K == 0.0)
            throw ZfError("At 0 K a run has no displacements: with that of " + element +
                          " give a temperature above 0");
    }
}

void AddDebyeTemperatures(Fluctuation& fluctuation, const VibrationRequest& request, const DebyeTable& table,
                          const ZfDebye& weights) {
    if (request.elements.empty())
        throw ZfError("The Debye model needs the elements: give a cluster or name them");
    for (const std::string& element : request.elements) {
        fluctuation.DebyeElement_.push_back(element);
        fluctuation.DebyeTemperature_K_.push_back(DebyeTemperatureOf(element, request, table, weights));
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
    if (request.model != VibrationModel::kDebye) {
        if (!request.uiso_angstrom2.empty())
            throw ZfError("Displacements by element need the model debye, which writes them");
        return;
    }
    CheckDebyeTemperatures(request);
    CheckDisplacements(request);
}

Fluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table,
                            const ZfDebye& weights) {
    CheckVibrations(request);
    Fluctuation fluctuation;
    fluctuation.Temperature_K_ = request.temperature_K;
    fluctuation.IsUseUisoInCluster_ = request.model == VibrationModel::kCluster;
    fluctuation.IsUseUisoEinsteinModel_ = request.model == VibrationModel::kEinstein;
    fluctuation.IsUseUisoDebyeModel_ = request.model == VibrationModel::kDebye;
    if (request.model == VibrationModel::kDebye) AddDebyeTemperatures(fluctuation, request, table, weights);
    return fluctuation;
}

void SaveFluctuation(Fluctuation fluctuation, const std::string& path) {
    ZfBarnXml xml("w");
    ExchangeFluctuation(xml, fluctuation, "DocFluctuation");
    WriteWholeFile(path, xml.Document());
}

}  // namespace qvre
