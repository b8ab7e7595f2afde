#pragma once

#include <cairo.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "report/picture/ColourMap.h"
#include "report/picture/DiscPicture.h"

using namespace qvre;

/// A PNG file as pixels.
class PngPicture {
public:
    explicit PngPicture(const std::string& path)
        : surface_(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy) {}

    bool IsReadable() const { return cairo_surface_status(surface_.get()) == CAIRO_STATUS_SUCCESS; }
    int Width() const { return cairo_image_surface_get_width(surface_.get()); }
    int Height() const { return cairo_image_surface_get_height(surface_.get()); }

    Colour At(int column, int row) const {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel,
                    cairo_image_surface_get_data(surface_.get()) +
                        row * cairo_image_surface_get_stride(surface_.get()) + 4 * column,
                    sizeof pixel);
        return {(pixel >> 16 & 0xFF) / 255.0, (pixel >> 8 & 0xFF) / 255.0, (pixel & 0xFF) / 255.0};
    }
    Colour At(const PicturePoint& point) const {
        return At(static_cast<int>(point.x * Width()), static_cast<int>(point.y * Height()));
    }

private:
    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface_;
};

/// Largest difference of the three parts.
inline double Difference(const Colour& a, const Colour& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}
