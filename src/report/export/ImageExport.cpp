#include "report/export/ImageExport.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <filesystem>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "report/export/ImageTable.h"
#include "report/export/NumpyFile.h"

namespace {

void WriteImageCsv(const ImageTable& table, const std::string& path) {
    WriteWholeFile(path, ImageCsv(table));
}

using Writer = void (*)(const ImageTable&, const std::string&);

Writer WriterFor(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    if (extension == ".csv") return WriteImageCsv;
    if (extension == ".npy") return WriteImageNumpy;
    if (extension == ".h5" || extension == ".hdf5" || extension == ".nxs") return WriteImageHdf5;
    throw ZfError("An image is written as .csv, .npy, .h5, .hdf5 or .nxs, not as " + path);
}

void AppendNumber(std::string& text, double value) {
    std::array<char, 32> digits{};
    std::snprintf(digits.data(), digits.size(), "%.9g", value);
    text += digits.data();
}

/// Comment line of a setting, in which no control character of a file may begin a new line.
std::string Comment(const RunSetting& setting) {
    std::string line = setting.name;
    line.insert(0, "# ").append(" = ").append(SettingText(setting));
    for (char& c : line)
        if (std::iscntrl(static_cast<unsigned char>(c)) != 0) c = ' ';
    return line;
}

}  // namespace

std::string ImageCsv(const ImageTable& table) {
    std::string text;
    for (const RunSetting& setting : table.settings) text.append(Comment(setting)).append("\n");
    text += "# theta: polar angle from the surface normal, degrees; phi: azimuth from +x to +y, degrees\n";
    for (const ImagePlane& plane : table.planes)
        text.append("# unit of ").append(plane.name).append(": ").append(plane.unit).append("\n");
    text += "theta,phi";
    for (const ImagePlane& plane : table.planes) text.append(",").append(plane.name);
    text += "\n";
    for (std::size_t i = 0; i < table.theta.size(); ++i) {
        if (!table.OnMap(i)) continue;
        AppendNumber(text, table.theta[i]);
        AppendNumber(text.append(","), table.phi[i]);
        for (const ImagePlane& plane : table.planes) AppendNumber(text.append(","), plane.values[i]);
        text += "\n";
    }
    return text;
}

void WriteImageNumpy(const ImageTable& table, const std::string& path) {
    std::vector<double> values = table.theta;
    values.insert(values.end(), table.phi.begin(), table.phi.end());
    for (const ImagePlane& plane : table.planes)
        values.insert(values.end(), plane.values.begin(), plane.values.end());
    WriteNumpyFile(path, {2 + table.planes.size(), table.rows, table.columns}, values);
}

ExportSummary ExportImage(const ExportRequest& request) {
    const Writer write = WriterFor(request.output);
    const ImageTable table = MakeImageTable(request);
    ExportSummary summary{table.columns, table.rows, 0};
    for (std::size_t i = 0; i < table.theta.size(); ++i) summary.pixels += table.OnMap(i) ? 1 : 0;
    write(table, request.output);
    return summary;
}
