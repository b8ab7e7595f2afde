#include "input/ZfEmittedWave.h"

#include "xml/ZfBarnFile.h"

bool ZfEmittedWave::Exchange(ZfBarnXml& xml, const std::string& itemTag) {
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

bool ExchangeEmittedWaves(ZfBarnXml& xml, std::vector<ZfEmittedWave>& waves) {
    if (!xml.OpenRack("emitted_wave_data")) return false;
    if (xml.OpenRack("data")) {
        xml.RecordList("list_emitter", "i", waves);
        xml.CloseRack("data");
    }
    xml.CloseRack("emitted_wave_data");
    return true;
}

void ZfLoadEmittedWave(std::vector<ZfEmittedWave>& waves, const std::string& path) {
    ZfBarnFile file(path, "r");
    ExchangeEmittedWaves(file, waves);
}
