#include "input/Fluctuation.h"

#include "xml/ZfBarnFile.h"

using namespace qvre;

bool ExchangeFluctuation(ZfBarnXml& xml, Fluctuation& fluctuation, const std::string& tag) {
    Fluctuation& f = fluctuation;
    if (!xml.OpenRack(tag)) return false;
    xml.LDouble("Temperature_K_", f.Temperature_K_, f.Temperature_K_);
    xml.StringList("DebyeElement_", f.DebyeElement_);
    xml.DoubleList("DebyeTemperature_K_", f.DebyeTemperature_K_);
    xml.Bool("IsUseUisoInCluster_", f.IsUseUisoInCluster_, f.IsUseUisoInCluster_);
    xml.Bool("IsUseUisoEinsteinModel_", f.IsUseUisoEinsteinModel_, f.IsUseUisoEinsteinModel_);
    xml.Bool("IsUseUisoDebyeModel_", f.IsUseUisoDebyeModel_, f.IsUseUisoDebyeModel_);
    xml.CloseRack(tag);
    return true;
}

void ZfLoadFluctuation(Fluctuation& fluctuation, const std::string& path) {
    ZfBarnFile file(path, "r");
    ExchangeFluctuation(file, fluctuation, "DocFluctuation");
}
