#include "pattern/SphereMap.h"

std::unique_ptr<ZfSphericalMappingConvert> MapConverter(SphereMap map) {
    if (map == SphereMap::kAzimuthalEquidistant) return std::make_unique<ZfConvertAzimuthalEquidistantMap>();
    return std::make_unique<ZfConvertEquidistantCylindricalMap>();
}

std::string MapName(SphereMap map) {
    return MapConverter(map)->Name();
}

std::optional<SphereMap> MapOfName(const std::string& name) {
    for (const Word<SphereMap>& word : kWords<SphereMap>)
        if (MapName(word.value) == name) return word.value;
    return std::nullopt;
}
