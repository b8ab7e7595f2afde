#include "app/Stages.h"
#include "app/ZfCalcDocument.h"
#include "foundation/Console.h"
#include "image/PlaneImage.h"
#include "image/ZfDocData.h"
#include "pattern/SphereMap.h"

using namespace qvre;

namespace {

ZfDocPattern& PatternOf(ZfCalcDocument& document, SphereMap map, double resolution) {
    if (map == SphereMap::kEquidistantCylindrical) {
        document.patternCylindrical.resolution = resolution;
        return document.patternCylindrical;
    }
    document.patternAzimuthal.resolution = resolution;
    return document.patternAzimuthal;
}

}  // namespace

void ZfRunPattern(const PatternRequest& request) {
    ZfCalcDocument& document = ZfCalcDocument::Instance();
    ZfScatteringData& data = *document.scatteringData;
    const auto map = static_cast<SphereMap>(request.mappingCode);
    const std::string name = ProjectionOf(map).Name();  // refuses a code of no map
    ZfDocPattern& pattern = PatternOf(document, map, request.angularResolution);
    ConsolePrint("Scattering data =%zu\n", data.ListScatteringData.size());
    pattern.ActivateAll(data.ListScatteringData.size());
    pattern.clusterLimit = request.clusterLimit;
    pattern.clusterLowerLimit = request.clusterLowerLimit;
    pattern.meanFreePath = request.meanFreePath;
    pattern.mfpByEmitterDistance = request.byEmitterDistance;
    pattern.mfpByDepth = request.byDepth;
    pattern.BuildMapping();

    ZfNotifyTerminateThreadCalculation notifier;
    ConsolePrint("Start pattern calculation....\n");
    pattern.PrepareCalculation(data, document.fluctuation, document.debye);
    pattern.Calculate(notifier, data, document.fluctuation, document.debye);

    ZfDocData image;
    ZfDocData::SetInfoString(image.infoString, "__SphereProjection.Name", name);
    ConsolePrint("Save to file....\n");
    SavePlane(image, pattern.mapping.planes[0], request.imageFile);
    if (request.i0Wanted) SavePlane(image, pattern.mapping.planes[1], request.i0File);
}
