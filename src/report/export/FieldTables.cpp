#include "report/export/FieldTables.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <iterator>
#include <utility>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "report/compare/ColumnNames.h"

namespace qvre {

namespace {

/// The one kinetic energy of the files of the run, eV.
double KineticEnergy(const ImageTable& table) {
    std::vector<double> energies;
    for (const RunSetting& setting : table.settings)
        if (const auto* numbers = std::get_if<std::vector<double>>(&setting.value);
            numbers != nullptr &&
            (setting.name == "kinetic_energies" || setting.name == "emitted_wave_energies"))
            energies.insert(energies.end(), numbers->begin(), numbers->end());
    std::sort(energies.begin(), energies.end());
    energies.erase(std::unique(energies.begin(), energies.end()), energies.end());
    if (energies.size() == 1) return energies[0];
    if (energies.empty())
        throw ZfError(
            "An image does not tell its kinetic energy: name a file of the run that does, such as the "
            ".xml_emt, or write .tpi, which has none");
    throw ZfError(
        fmt::format("The run has {} kinetic energies, and the column holds one: write .tpi, which has none",
                    energies.size()));
}

double Value(char letter, const ImageTable& table, std::size_t pixel, double energy) {
    switch (letter) {
        case 'e':
            return energy;
        case 't':
            return table.theta[pixel];
        case 'p':
            return table.phi[pixel];
        default:
            return table.planes[0].values[pixel];
    }
}

std::string WaveName(const std::string& plane) {
    static constexpr std::array<std::pair<const char*, const char*>, 3> names = {
        {{"I", "intensity"}, {"I0", "intensity0"}, {"B", "background"}}};
    for (const auto& [name, wave] : names)
        if (plane == name) return wave;
    return plane;
}

std::string IgorNumber(double value) {
    return value == value ? fmt::format("\t{:.9g}", value) : "\tNaN";
}

/// A setting as a remark of Igor, on one line.
std::string Remark(const RunSetting& setting) {
    std::string line = fmt::format("X // {} = {}", setting.name, SettingText(setting));
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return std::iscntrl(c) != 0; }, ' ');
    return line + "\n";
}

void AddMatrix(std::string& text, const ImageTable& table, const ImagePlane& plane) {
    const std::string name = WaveName(plane.name);
    text += fmt::format("WAVES/D/O/N=({},{})\t{}\nBEGIN\n", table.rows, table.columns, name);
    for (std::size_t i = 0; i < plane.values.size(); ++i) {
        text += IgorNumber(plane.values[i]);
        if ((i + 1) % table.columns == 0) text += "\n";
    }
    text +=
        fmt::format("END\nX SetScale/P x {:.9g},{:.9g},\"deg\", {}; SetScale/P y {:.9g},{:.9g},\"deg\", {}\n",
                    table.theta[0], table.rows > 1 ? table.theta[table.columns] - table.theta[0] : 1.0, name,
                    table.phi[0], table.columns > 1 ? table.phi[1] - table.phi[0] : 1.0, name);
}

void AddList(std::string& text, const ImageTable& table) {
    text += "WAVES/D/O\ttheta\tphi";
    for (const ImagePlane& plane : table.planes) text += "\t" + WaveName(plane.name);
    text += "\nBEGIN\n";
    for (std::size_t i = 0; i < table.theta.size(); ++i) {
        if (!table.OnMap(i)) continue;
        text += IgorNumber(table.theta[i]) + IgorNumber(table.phi[i]);
        for (const ImagePlane& plane : table.planes) text += IgorNumber(plane.values[i]);
        text += "\n";
    }
    text += "END\n";
}

}  // namespace

void WriteImageColumns(const ImageTable& table, const std::string& path) {
    const std::string letters = ColumnLetters(path);
    if (letters.find_first_of("as") != std::string::npos)
        throw ZfError("An image has no angle along a slit and no standard deviation: write .tpi or .etpi");
    if (table.planes.size() > 1)
        throw ZfError("The columns of ." + letters + " hold the intensity alone: for chi write .csv or .itx");
    const double energy = letters.find('e') == std::string::npos ? 0.0 : KineticEnergy(table);
    std::string text;
    for (std::size_t i = 0; i < table.theta.size(); ++i) {
        if (!table.OnMap(i)) continue;
        for (const char letter : letters)
            fmt::format_to(std::back_inserter(text), "{}{:.9g}", letter == letters.front() ? "" : "\t",
                           Value(letter, table, i, energy));
        text += "\n";
    }
    WriteWholeFile(path, text);
}

void WriteImageIgor(const ImageTable& table, const std::string& path) {
    std::string text = "IGOR\n";
    if (table.map == SphereMap::kEquidistantCylindrical)
        for (const ImagePlane& plane : table.planes) AddMatrix(text, table, plane);
    else
        AddList(text, table);
    for (const RunSetting& setting : table.settings) text += Remark(setting);
    if (!table.leftOut.empty()) text += "X // " + table.leftOut + "\n";
    WriteWholeFile(path, text);
}

}  // namespace qvre
