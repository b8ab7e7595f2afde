#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "foundation/Words.h"
#include "pattern/ZfSphericalMappingConvert.h"

class ZfDocPattern;

namespace qvre {

/// The two maps of patterns that are calculated and stored; the values are the codes of the command line.
/// Rows and columns count from 0.
///
/// Azimuthal equidistant: square, upper hemisphere; pixel (x, y) lies at theta = |r| 180/(W - 1) degrees,
/// phi = atan2(ry, rx) with r = (x, y) - (W - 1)/2. The row number grows along +y, so a program that shows
/// row 0 at the top shows the map mirrored. Pixels beyond 90 degrees do not belong to the map.
///
/// Equidistant cylindrical: whole sphere; theta = 180 y/(H - 1), phi = 360 x/W degrees. The first and the
/// last row are the poles; the meridian of column 0 is not repeated.
enum class SphereMap : std::int32_t { kAzimuthalEquidistant = 0, kEquidistantCylindrical = 1 };

template <>
inline constexpr auto kWords<SphereMap> = std::to_array<Word<SphereMap>>(
    {{"AE", SphereMap::kAzimuthalEquidistant}, {"EC", SphereMap::kEquidistantCylindrical}});

/// The projection of a map; its name is the one that image files give. Throws ZfError for a code of no map.
const ZfSphericalMappingConvert& ProjectionOf(SphereMap map);

std::optional<SphereMap> SphereMapOfName(std::string_view name);

/// A pattern on a map of `resolution` degrees a pixel.
std::unique_ptr<ZfDocPattern> MakePattern(SphereMap map, double resolution);

}  // namespace qvre
