#include "app/ZfCalcDocument.h"

ZfCalcDocument& ZfCalcDocument::Instance() {
    static ZfCalcDocument* document = nullptr;
    if (!document) document = new ZfCalcDocument;
    return *document;
}

ZfCalcDocument::ZfCalcDocument() {
    scatteringData = std::make_unique<ZfScatteringData>();
    phaseShifts = std::make_unique<ZfPhaseShiftDocument>();
}
