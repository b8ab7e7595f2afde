#include <algorithm>

#include "report/export/Hdf5Document.h"
#include "report/export/ImageWriters.h"
#include "report/export/NexusSettings.h"

// An image as a NeXus file: M. Könnecke et al., J. Appl. Cryst. 48, 301 (2015); the rules of the axes are
// those of the class NXdata in the NeXus manual.

namespace qvre {

namespace {

/// A cylindrical map is a grid of theta and phi, each an axis of its own.
void WriteGridAxes(const Hdf5Node& data, const ImageTable& table) {
    std::vector<double> theta(table.rows);
    for (std::size_t row = 0; row < table.rows; ++row) theta[row] = table.theta[row * table.columns];
    const std::vector<double> phi(table.phi.begin(),
                                  table.phi.begin() + static_cast<std::ptrdiff_t>(table.columns));
    data.Attribute("axes", std::vector<std::string>{"theta", "phi"})
        .Attribute("theta_indices", std::vector{0})
        .Attribute("phi_indices", std::vector{1});
    data.Dataset("theta", {table.rows}, theta).Attribute("units", "degrees");
    data.Dataset("phi", {table.columns}, phi).Attribute("units", "degrees");
}

/// Distance of each column, or row, from the normal, in degrees of the polar angle.
std::vector<double> DiscAxis(std::size_t count) {
    std::vector<double> axis(count);
    const auto last = static_cast<double>(count - 1);
    for (std::size_t i = 0; i < count; ++i) axis[i] = (static_cast<double>(i) - last / 2.0) * 180.0 / last;
    return axis;
}

/// An azimuthal map is a picture over x = theta cos(phi), y = theta sin(phi), with both angles beside it.
void WriteDiscAxes(const Hdf5Node& data, const ImageTable& table) {
    const Hdf5Shape shape = {table.rows, table.columns};
    data.Attribute("axes", std::vector<std::string>{"y", "x"})
        .Attribute("y_indices", std::vector{0})
        .Attribute("x_indices", std::vector{1})
        .Attribute("theta_indices", std::vector{0, 1})
        .Attribute("phi_indices", std::vector{0, 1});
    data.Dataset("y", {table.rows}, DiscAxis(table.rows)).Attribute("units", "degrees");
    data.Dataset("x", {table.columns}, DiscAxis(table.columns)).Attribute("units", "degrees");
    data.Dataset("theta", shape, table.theta).Attribute("units", "degrees");
    data.Dataset("phi", shape, table.phi).Attribute("units", "degrees");
}

}  // namespace

void WriteImageHdf5(const ImageTable& table, const std::string& path) {
    const Hdf5Document document;
    document.Root().Attribute("default", "entry");
    const Hdf5Node entry = document.Root().Group("entry", "NXentry");
    entry.Attribute("default", "data");
    const Hdf5Node data = entry.Group("data", "NXdata");
    data.Attribute("signal", table.planes.back().name);
    std::vector<std::string> others;
    for (const ImagePlane& plane : table.planes) others.push_back(plane.name);
    others.pop_back();
    if (!others.empty()) data.Attribute("auxiliary_signals", others);
    for (const ImagePlane& plane : table.planes)
        data.Dataset(plane.name, {table.rows, table.columns}, plane.values).Attribute("units", plane.unit);
    if (table.map == SphereMap::kEquidistantCylindrical)
        WriteGridAxes(data, table);
    else
        WriteDiscAxes(data, table);
    WriteNexusSettings(entry, table.settings);
    document.Save(path);
}

}  // namespace qvre
