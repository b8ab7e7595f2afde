#include "app/Stages.h"
#include "app/ZfCalcDocument.h"
#include "foundation/Console.h"

using namespace qvre;

namespace {

constexpr double kTolerance = 0.01;

}  // namespace

void ZfRunScattering(const std::string& outputFile, std::int32_t method) {
    ZfCalcDocument& document = ZfCalcDocument::Instance();
    ZfScatteringData& data = *document.scatteringData;
    data.EPS = kTolerance;
    data.Version = method;
    data.MultiScattering = 1;
    data.EWStart = 0;
    data.StStart = 0;
    data.AtStart = 0;
    data.MuStart = 0;
    data.fileName = outputFile;
    ZfNotifyTerminateThreadCalculation notifier;
    ConsolePrint("Calculation start\n");
    data.runFlag = true;
    data.Calculate(notifier, document.cluster, document.emittedWaves, *document.phaseShifts);
    ConsolePrint("Calculation finished\n");
}
