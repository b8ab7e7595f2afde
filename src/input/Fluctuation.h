#pragma once

#include <string>
#include <vector>

class ZfBarnXml;

namespace qvre {

/// How the atoms vibrate: a temperature, a table of Debye temperatures by element, and the choice of the
/// model.
struct Fluctuation {
    double Temperature_K_ = 0.0;
    std::vector<std::string> DebyeElement_;  ///< entry i pairs with entry i of DebyeTemperature_K_
    std::vector<double> DebyeTemperature_K_;
    bool IsUseUisoInCluster_ = false;      ///< keep the stored displacements; beats both models
    bool IsUseUisoEinsteinModel_ = false;  ///< beats the Debye model
    bool IsUseUisoDebyeModel_ = false;
};

}  // namespace qvre

/// False when the tag is absent; nothing changes then.
bool ExchangeFluctuation(ZfBarnXml& xml, qvre::Fluctuation& fluctuation, const std::string& tag);

void ZfLoadFluctuation(qvre::Fluctuation& fluctuation, const std::string& path);
