#pragma once

#include <cstdint>
#include <string>
#include <vector>

class ZfBarnXml;

/// A rectangle, or a polygon, of an image; in pixels.
struct ZfRegion {
    static constexpr std::int32_t kPolygon = 2;

    struct Point {
        bool Exchange(ZfBarnXml& xml, const std::string& tag);

        float x = 0.0F;
        float y = 0.0F;
    };

    /// False when the region is absent, which leaves it as it is. The points belong to a polygon alone.
    bool Exchange(ZfBarnXml& xml, const std::string& tag);

    float Left = 0.0F;
    float Bottom = 0.0F;
    float Width = 0.0F;
    float Height = 0.0F;
    std::int32_t ReginType = 0;
    std::string Name;
    std::vector<Point> points;
};
