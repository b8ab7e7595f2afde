#include <atomic>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Console.h"
#include "scattering/ZfScatteringData.h"
#include "xml/ZfBarnFile.h"

using namespace qvre;

// The scattered-wave file: the result of the scattering stage in internal units (metres, 1/m), coefficient
// tables with all bits. One walk through the tags reads and writes.

namespace {

void ExchangePlaneWave(ZfBarnXml& xml, ZfFreeElectron& source) {
    xml.Bool("IsPlaneWave", source.IsPlaneWave, source.IsPlaneWave);
    if (!source.IsPlaneWave) return;
    xml.LDouble("PlaneWaveX", source.planeWaveVector.VectorAt(0), 0.0);
    xml.LDouble("PlaneWaveY", source.planeWaveVector.VectorAt(1), 0.0);
    xml.LDouble("PlaneWaveZ", source.planeWaveVector.VectorAt(2), 0.0);
}

/// The texts of all tables, made side by side.
std::vector<std::string> CoefficientTexts(std::vector<ZfFreeElectron>& sources) {
    std::vector<std::string> texts(sources.size());
    std::atomic<bool> full = false;
    const auto count = std::ssize(sources);
#pragma omp parallel for schedule(static) if (count > 1)
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const auto place = static_cast<std::size_t>(i);
        try {
            texts[place] = CoefficientText(sources[place].A);
        } catch (const std::bad_alloc&) {
            full = true;
        }
    }
    if (full) throw std::bad_alloc();
    return texts;
}

/// One source and its label; false when there is no further item. Writing takes the text of its table.
bool ExchangeSource(ZfBarnXml& xml, ZfFreeElectron& source, std::string& label, bool isEmitter,
                    std::string coefficients = {}) {
    if (!xml.OpenRack("i")) return false;
    xml.LDouble("x", source.position.VectorAt(0), 0.0);
    xml.LDouble("y", source.position.VectorAt(1), 0.0);
    xml.LDouble("z", source.position.VectorAt(2), 0.0);
    xml.Text("a", label, "");
    xml.Int32("an", source.atomicNumber, 0);
    xml.LDouble("Uiso", source.Uiso, 0.0);
    if (xml.IsWriting())
        PutCoefficients(xml, "c", source.A.L, std::move(coefficients));
    else
        ExchangeCoefficients(xml, "c", source.A, "b");
    if (isEmitter) ExchangePlaneWave(xml, source);
    xml.CloseRack("i");
    return true;
}

void ReadSources(ZfBarnXml& xml, ZfVectorFreeElectron& list, std::vector<std::string>& labels) {
    list.electrons.clear();
    labels.clear();
    while (true) {
        ZfFreeElectron source;
        source.SetEnergy_eV(list.Ek_eV);
        std::string label;
        if (!ExchangeSource(xml, source, label, list.electrons.empty())) return;
        list.electrons.push_back(std::move(source));
        labels.push_back(std::move(label));
    }
}

void ExchangeList(ZfBarnXml& xml, const std::string& tag, ZfVectorFreeElectron& list,
                  std::vector<std::string>& labels) {
    if (!xml.OpenRack(tag)) return;
    double energy = list.Ek_eV;
    xml.LDouble("Ek_eV", energy, 0.0);
    list.SetEnergy_eV(energy);
    if (xml.OpenRack("atom_list")) {
        if (xml.IsWriting()) {
            std::vector<std::string> texts = CoefficientTexts(list.electrons);
            for (std::size_t i = 0; i < list.electrons.size(); ++i)
                ExchangeSource(xml, list.electrons[i], CheckedAt(labels, i), i == 0, std::move(texts[i]));
        } else {
            ReadSources(xml, list, labels);
        }
        xml.CloseRack("atom_list");
    }
    xml.CloseRack(tag);
}

void ExchangeData(ZfBarnXml& xml, ZfScatteringData& data) {
    if (!xml.OpenRack("data")) return;
    xml.Int32("Version", data.Version, 0);
    xml.LDouble("EPS", data.EPS, 1.0);
    xml.Int32("MultiScattering", data.MultiScattering, 1);
    xml.Int32("StIndex", data.StIndex, 0);
    xml.Int32("EWIndex", data.EWIndex, 0);
    xml.Int32("AtIndex", data.AtIndex, 0);
    xml.Int32("MuIndex", data.MuIndex, 0);
    ConsolePrint("Start load/save list scatteirng data\n");
    xml.RecordList("ListScatteringData", "i", data.ListScatteringData);
    xml.CloseRack("data");
}

}  // namespace

bool ZfScatteringRecord::Exchange(ZfBarnXml& xml, const std::string& itemTag) {
    if (!xml.OpenRack(itemTag)) return false;
    xml.Int32("StIndex", StIndex, 0);
    xml.Int32("EWIndex", EWIndex, 0);
    xml.LDouble("Ratio", Ratio, 0.0);
    // Both lists are written, as readers expect; the first is a copy that no reader takes.
    if (xml.IsWriting()) {
        ConsolePrint("ListScatterer\n");
        ExchangeList(xml, "ListScatterer", ListScatterer, atomLabels);
    }
    ConsolePrint("NextListScatterer\n");
    ExchangeList(xml, "NextListScatterer", NextListScatterer, atomLabels);
    if (!xml.IsWriting()) ListScatterer = NextListScatterer;
    ConsolePrint("ScattringData %d %d\n", StIndex, EWIndex);
    xml.CloseRack(itemTag);
    return true;
}

bool ZfScatteringData::Exchange(ZfBarnXml& xml) {
    if (!xml.OpenRack("QVRE_ScatteringData")) return false;
    ExchangeData(xml, *this);
    xml.CloseRack("QVRE_ScatteringData");
    return true;
}

void ZfLoadScatteredWave(ZfScatteringData& data, const std::string& path) {
    ZfBarnFile file(path, "r");
    data.Exchange(file);
}
