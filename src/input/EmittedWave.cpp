#include "input/EmittedWave.h"

#include "xml/ZfBarnFile.h"

using namespace qvre;

namespace qvre {

bool EmittedWave::Exchange(ZfBarnXml& xml, const std::string& itemTag) {
    if (!xml.OpenRack(itemTag)) return false;
    xml.LDouble("Ek", Ek, 1000.0);
    xml.LDouble("Ratio", Ratio, 1.0);
    ExchangeCoefficients(xml, "coeff", coeff, "t");
    xml.Bool("IsPlaneWave", IsPlaneWave, IsPlaneWave);
    xml.LDouble("PlaneWaveBeta_deg", PlaneWaveBeta_deg, PlaneWaveBeta_deg);
    xml.LDouble("PlaneWaveGamma_deg", PlaneWaveGamma_deg, PlaneWaveGamma_deg);
    xml.CloseRack(itemTag);
    return true;
}

bool ExchangeEmittedWaves(ZfBarnXml& xml, std::vector<EmittedWave>& waves) {
    if (!xml.OpenRack("emitted_wave_data")) return false;
    if (xml.OpenRack("data")) {
        xml.RecordList("list_emitter", "i", waves);
        xml.CloseRack("data");
    }
    xml.CloseRack("emitted_wave_data");
    return true;
}

}  // namespace qvre

void ZfLoadEmittedWave(std::vector<EmittedWave>& waves, const std::string& path) {
    ZfBarnFile file(path, "r");
    ExchangeEmittedWaves(file, waves);
}
