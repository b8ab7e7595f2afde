#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "image/ZfDocData.h"
#include "pattern/ZfSphericalMapping.h"
#include "report/sphere/SphereImage.h"
#include "xml/ZfQBarnFile.h"

using namespace qvre;

constexpr SphereMap kMaps[] = {SphereMap::kAzimuthalEquidistant, SphereMap::kEquidistantCylindrical};

/// A pattern document's map filled with f(x, y, z), which is where stored images come from.
template <class Function>
SphereImage Sampled(SphereMap map, double resolution, Function f) {
    const ZfSphericalMapping mapping = map == SphereMap::kAzimuthalEquidistant
                                           ? CreateAzimuthalEquidistantMapping(0, resolution)
                                           : CreateEquidistantCylindricalMapping(0, resolution);
    std::vector<double> pixels;
    for (std::int64_t i = 0; i < mapping.pixelWeight.Count(); ++i) {
        const bool inside = mapping.pixelWeight.Data()[i] != 0.0;
        pixels.push_back(inside ? f(mapping.directionX.Data()[i], mapping.directionY.Data()[i],
                                    mapping.directionZ.Data()[i])
                                : 0.0);
    }
    return {map, mapping.pixelWeight.ColSize, mapping.pixelWeight.RowSize, std::move(pixels)};
}

/// f of the direction (theta, phi).
template <class Function>
double At(Function f, double theta, double phi) {
    return f(std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta));
}

inline ZfFloatMatrix StoredPixels(const SphereImage& image) {
    ZfFloatMatrix pixels(image.Width(), image.Height());
    pixels.Clear();
    for (const SpherePixel& p : image.Pixels()) pixels.At(p.column, p.row) = static_cast<float>(p.value);
    return pixels;
}

/// Writes an image file; an empty map name leaves the name out.
inline std::string WriteImageFile(const std::string& path, const SphereImage& image,
                                  const std::string& mapName = {}, const std::string& title = {}) {
    ZfDocData document;
    if (!mapName.empty()) ZfDocData::SetInfoString(document.infoString, "__SphereProjection.Name", mapName);
    if (!title.empty()) {
        ZfDocData::SetInfoString(document.infoString, "Title", title);
        ZfDocData::SetInfoString(document.infoString, "Comment", "not the title");
    }
    document.OnlyImage() = StoredPixels(image);
    ZfQBarnFile file(path, "w");
    document.SaveLoad(file);
    file.Save();
    return path;
}
