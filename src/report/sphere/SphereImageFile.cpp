#include <fmt/format.h>

#include <filesystem>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "image/ZfDocData.h"
#include "report/sphere/SphereImage.h"
#include "xml/ZfQBarnFile.h"

namespace qvre {

namespace {

namespace fs = std::filesystem;

std::string InfoText(const ZfDocData& document, const char* key) {
    const auto found = document.infoString.find(key);
    return found == document.infoString.end() || found->second.empty() ? std::string()
                                                                       : found->second.front();
}

std::string Title(const ZfDocData& document, const std::string& path) {
    for (const char* const key : {"Title", "Comment"}) {
        std::string text = InfoText(document, key);
        if (!text.empty()) return text;
    }
    return fs::path(path).stem().string();
}

SphereMap MapOf(const ZfDocData& document, const ZfFloatMatrix& pixels) {
    const std::string name = InfoText(document, "__SphereProjection.Name");
    if (const auto map = SphereMapOfName(name)) return *map;
    if (!name.empty())
        throw ZfError(fmt::format("the map \"{}\" is not known; {} and {} are", name,
                                  ProjectionOf(SphereMap::kAzimuthalEquidistant).Name(),
                                  ProjectionOf(SphereMap::kEquidistantCylindrical).Name()));
    if (pixels.ColSize == pixels.RowSize) return SphereMap::kAzimuthalEquidistant;
    if (pixels.ColSize == 2 * (std::int64_t{pixels.RowSize} - 1)) return SphereMap::kEquidistantCylindrical;
    throw ZfError(
        fmt::format("the file names no map, and an image of {} x {} pixels is neither square (azimuthal "
                    "equidistant) nor of width 2 (height - 1) (cylindrical)",
                    pixels.ColSize, pixels.RowSize));
}

void Read(ZfDocData& document, const std::string& path) {
    RequireFile(path);
    if (!fs::is_regular_file(path)) throw ZfError("it is not a plain file");
    if (document.CheckType(path) < 0) throw ZfError("it is no image file (.xml_img)");
    ZfQBarnFile file(path, "r");
    if (!document.SaveLoad(file)) throw ZfError("its version cannot be read");
    if (document.imageSet.empty()) throw ZfError("it holds no image");
}

LoadedImage Load(const std::string& path) {
    ZfDocData document;
    Read(document, path);
    const ZfFloatMatrix& pixels = document.imageSet.begin()->second;
    std::vector<double> values(pixels.Data(), pixels.Data() + pixels.Count());
    return {SphereImage(MapOf(document, pixels), pixels.ColSize, pixels.RowSize, std::move(values)),
            Title(document, path),
            {document.infoValue, document.infoString}};
}

}  // namespace

bool LoadedImage::IsAsymmetry() const {
    const auto found = information.texts.find(kQuantityKey);
    return found != information.texts.end() && !found->second.empty() && found->second.front() == kAsymmetry;
}

LoadedImage LoadSphereImage(const std::string& path) {
    return Naming(path, [&] { return Load(path); });
}

}  // namespace qvre
