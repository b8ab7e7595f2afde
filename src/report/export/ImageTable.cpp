#include "report/export/ImageTable.h"

#include <cmath>
#include <filesystem>
#include <limits>

#include "foundation/Constants.h"
#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "report/sphere/ImageSum.h"

namespace qvre {

namespace {

constexpr const char* kIntensityUnit = "arbitrary units";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::size_t PixelIndex(const ImageTable& table, const SpherePixel& pixel) {
    return static_cast<std::size_t>(pixel.row) * table.columns + static_cast<std::size_t>(pixel.column);
}

std::vector<double> Plane(const ImageTable& table, const std::vector<SpherePixel>& pixels) {
    std::vector<double> values(table.columns * table.rows, kNaN);
    for (const SpherePixel& pixel : pixels)
        if (PixelIndex(table, pixel) < values.size()) values[PixelIndex(table, pixel)] = pixel.value;
    return values;
}

void SetDirections(ImageTable& table, const SphereImage& image) {
    table.theta.assign(table.columns * table.rows, kNaN);
    table.phi = table.theta;
    for (const SpherePixel& pixel : image.Pixels()) {
        const std::size_t i = PixelIndex(table, pixel);
        if (i >= table.theta.size()) continue;
        // Rows and columns of the cylinder are exact; at the poles no direction tells the azimuth.
        const bool cylinder = table.map == SphereMap::kEquidistantCylindrical;
        table.theta[i] =
            cylinder ? pixel.row * 180.0 / (image.Height() - 1) : pixel.theta * kDegreesPerRadian;
        table.phi[i] = cylinder ? pixel.column * 360.0 / image.Width() : pixel.phi * kDegreesPerRadian;
    }
}

/// Rows of the table; those of the upper hemisphere come first in a cylindrical map.
std::size_t Rows(const SphereImage& image, bool hemisphere) {
    const auto height = static_cast<std::size_t>(image.Height());
    return hemisphere && image.Map() == SphereMap::kEquidistantCylindrical ? (height - 1) / 2 + 1 : height;
}

RunSettings Settings(const ExportRequest& request, const ImageTable& table) {
    const auto fileName = [](const std::string& path) {
        return std::filesystem::path(path).filename().string();
    };
    RunSettings settings = {{"program", "qvre " QVRE_VERSION, ""},
                            {"image_file", fileName(request.image), ""}};
    if (!request.i0.empty()) settings.push_back({"i0_file", fileName(request.i0), ""});
    if (!request.partner.empty()) settings.push_back({"second_image_file", fileName(request.partner), ""});
    if (request.background)
        settings.push_back({"background",
                            request.background->degree ? std::to_string(*request.background->degree) : "mean",
                            ""});
    settings.push_back({"map", ProjectionOf(table.map).Name(), ""});
    settings.push_back({"resolution", std::vector{table.resolution}, "degrees"});
    AddImageSettings(settings, request.image);
    for (const std::string& path : request.runFiles) AddFileSettings(settings, path);
    return settings;
}

void AddModulation(ImageTable& table, const ExportRequest& request, const SphereImage& image) {
    const ModulationFunction chi = request.background
                                       ? ModulationFunction(image, *request.background)
                                       : ModulationFunction(image, LoadSphereImage(request.i0).image);
    table.planes.push_back(
        {request.background ? "B" : "I0", kIntensityUnit, Plane(table, chi.ReferencePixels())});
    table.planes.push_back({"chi", "1", Plane(table, chi.Pixels())});
    table.leftOut = LeftOutText(chi.LeftOut(), chi.IsByBackground());
}

void AddAsymmetry(ImageTable& table, const ExportRequest& request, const SphereImage& image) {
    const SphereImage other = LoadSphereImage(request.partner).image;
    const ModulationFunction asymmetry =
        Naming(request.image + " and " + request.partner, [&] { return AsymmetryOf(image, other); });
    table.planes.front().name = "A";
    table.planes.push_back({"B", kIntensityUnit, Plane(table, other.Pixels())});
    table.planes.push_back({"asymmetry", "1", Plane(table, asymmetry.Pixels())});
    table.leftOut = AsymmetryLeftOutText(asymmetry);
}

}  // namespace

ImageTable MakeImageTable(const ExportRequest& request) {
    const LoadedImage loaded = LoadSphereImage(request.image);
    const SphereImage& image = loaded.image;
    if (loaded.IsAsymmetry() && (!request.i0.empty() || request.background || !request.partner.empty()))
        throw ZfError(request.image + " is an asymmetry already: export it as it is");
    ImageTable table;
    table.map = image.Map();
    table.columns = static_cast<std::size_t>(image.Width());
    table.rows = Rows(image, request.hemisphere);
    table.resolution = image.Resolution_deg();
    SetDirections(table, image);
    if (loaded.IsAsymmetry())
        table.planes.push_back({"asymmetry", "1", Plane(table, image.Pixels())});
    else
        table.planes.push_back({"I", kIntensityUnit, Plane(table, image.Pixels())});
    if (!request.i0.empty() || request.background) AddModulation(table, request, image);
    if (!request.partner.empty()) AddAsymmetry(table, request, image);
    table.settings = Settings(request, table);
    return table;
}

}  // namespace qvre
