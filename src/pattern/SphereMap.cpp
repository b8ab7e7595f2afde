#include "pattern/SphereMap.h"

#include "foundation/ZfError.h"
#include "pattern/ZfDocPattern.h"

namespace qvre {

namespace {

template <class Pattern>
std::unique_ptr<ZfDocPattern> Make(double resolution) {
    auto pattern = std::make_unique<Pattern>();
    pattern->resolution = resolution;
    return pattern;
}

}  // namespace

const ZfSphericalMappingConvert& ProjectionOf(SphereMap map) {
    static const ZfConvertAzimuthalEquidistantMap azimuthal;
    static const ZfConvertEquidistantCylindricalMap cylindrical;
    if (map == SphereMap::kAzimuthalEquidistant) return azimuthal;
    if (map == SphereMap::kEquidistantCylindrical) return cylindrical;
    throw ZfError("Undefined mapping method");
}

std::optional<SphereMap> SphereMapOfName(std::string_view name) {
    for (const Word<SphereMap>& word : kWords<SphereMap>)
        if (ProjectionOf(word.value).Name() == name) return word.value;
    return std::nullopt;
}

std::unique_ptr<ZfDocPattern> MakePattern(SphereMap map, double resolution) {
    if (map == SphereMap::kEquidistantCylindrical)
        return Make<ZfDocPattern_EquidistantCylindrical>(resolution);
    return Make<ZfDocPattern_AzimuthalEquidistant>(resolution);
}

}  // namespace qvre
