#pragma once

#include <memory>
#include <optional>
#include <string>

#include "foundation/Words.h"
#include "pattern/ZfSphericalMappingConvert.h"

/// The two maps of stored patterns. Rows and columns count from 0.
///
/// Azimuthal equidistant: square, upper hemisphere; pixel (x, y) lies at theta = |r| 180/(W - 1) degrees,
/// phi = atan2(ry, rx) with r = (x, y) - (W - 1)/2. The row number grows along +y, so a program that shows
/// row 0 at the top shows the map mirrored. Pixels beyond 90 degrees do not belong to the map.
///
/// Equidistant cylindrical: whole sphere; theta = 180 y/(H - 1), phi = 360 x/W degrees. The first and the
/// last row are the poles; the meridian of column 0 is not repeated.
enum class SphereMap { kAzimuthalEquidistant, kEquidistantCylindrical };

template <>
inline constexpr auto kWords<SphereMap> = std::to_array<Word<SphereMap>>(
    {{"AE", SphereMap::kAzimuthalEquidistant}, {"EC", SphereMap::kEquidistantCylindrical}});

std::unique_ptr<ZfSphericalMappingConvert> MapConverter(SphereMap map);

/// The name in image files: "AzimuthalEquidistant", "EquidistantCylindrical".
std::string MapName(SphereMap map);
std::optional<SphereMap> MapOfName(const std::string& name);
