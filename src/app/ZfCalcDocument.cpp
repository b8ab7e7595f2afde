#include "app/ZfCalcDocument.h"

#include "crystal/CrystalPresets.h"

using namespace qvre;

ZfCalcDocument& ZfCalcDocument::Instance() {
    static ZfCalcDocument* document = nullptr;
    if (!document) document = new ZfCalcDocument;
    return *document;
}

ZfCalcDocument::ZfCalcDocument() {
    AddCrystalPresets(crystalPresets);
    scatteringData = std::make_unique<ZfScatteringData>();
    phaseShifts = std::make_unique<ZfPhaseShiftDocument>();
}
