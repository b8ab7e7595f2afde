#include "report/export/ImageWriters.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>

#include "foundation/ReplacedFile.h"
#include "report/export/NumpyFile.h"

namespace qvre {

namespace {

/// Comment line of a setting, in which no control character of a file may begin a new line.
std::string Comment(const RunSetting& setting) {
    std::string line = fmt::format("# {} = {}", setting.name, SettingText(setting));
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    return line + "\n";
}

std::string Head(const ImageTable& table) {
    std::string text;
    for (const RunSetting& setting : table.settings) text += Comment(setting);
    text += "# theta: polar angle from the surface normal, degrees; phi: azimuth from +x to +y, degrees\n";
    if (!table.leftOut.empty()) text += fmt::format("# {}\n", table.leftOut);
    for (const ImagePlane& plane : table.planes)
        text += fmt::format("# unit of {}: {}\n", plane.name, plane.unit);
    text += "theta,phi";
    for (const ImagePlane& plane : table.planes) text += "," + plane.name;
    return text + "\n";
}

}  // namespace

void WriteImageCsv(const ImageTable& table, const std::string& path) {
    std::string text = Head(table);
    const auto end = std::back_inserter(text);
    for (std::size_t i = 0; i < table.theta.size(); ++i) {
        if (!table.OnMap(i)) continue;
        fmt::format_to(end, "{:.9g},{:.9g}", table.theta[i], table.phi[i]);
        for (const ImagePlane& plane : table.planes) {
            text += ",";
            if (!std::isnan(plane.values[i])) fmt::format_to(end, "{:.9g}", plane.values[i]);
        }
        text += "\n";
    }
    WriteWholeFile(path, text);
}

void WriteImageNumpy(const ImageTable& table, const std::string& path) {
    std::vector<double> values = table.theta;
    values.insert(values.end(), table.phi.begin(), table.phi.end());
    for (const ImagePlane& plane : table.planes)
        values.insert(values.end(), plane.values.begin(), plane.values.end());
    WriteNumpyFile(path, {2 + table.planes.size(), table.rows, table.columns}, values);
}

}  // namespace qvre
