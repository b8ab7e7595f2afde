#include <algorithm>
#include <sstream>

#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"
#include "prepare/cluster/SurfaceStructure.h"

namespace qvre {

namespace {

/// Places of what is read in a line of an atom; the order of a plain XYZ file until Properties says another.
struct Columns {
    std::size_t species = 0;
    std::size_t position = 1;
    std::size_t Uiso = 0;  // 0: none
    std::size_t count = 4;
};

/// The value of key=value or key="value ..." in the title; empty when it is not there.
std::string TitleValue(const std::string& title, const std::string& key) {
    std::size_t begin = title.find(key + "=");
    if (begin == std::string::npos) return {};
    begin += key.size() + 1;
    const bool quoted = begin < title.size() && title[begin] == '"';
    if (quoted) ++begin;
    return title.substr(begin, title.find(quoted ? '"' : ' ', begin) - begin);
}

/// "species:S:1:pos:R:3:Uiso:R:1": name, type and number of columns of each property.
Columns ReadProperties(const std::string& properties) {
    Columns columns;
    if (properties.empty()) return columns;
    columns.count = 0;
    bool hasPosition = false;
    std::istringstream stream(properties);
    std::string name;
    std::string type;
    std::string width;
    while (std::getline(stream, name, ':') && std::getline(stream, type, ':') &&
           std::getline(stream, width, ':')) {
        const double size = StrictNumber(width, "Properties");
        if (!(size >= 1.0 && size <= 100.0)) throw ZfError("Properties has a bad number of columns");
        if (name == "species") columns.species = columns.count;
        if (name == "pos") columns.position = columns.count;
        if (name == "Uiso") columns.Uiso = columns.count;
        hasPosition = hasPosition || (name == "pos" && size == 3.0);
        columns.count += static_cast<std::size_t>(size);
    }
    if (!hasPosition) throw ZfError("Properties has no pos:R:3");
    return columns;
}

gemmi::Mat33 ReadLattice(const std::string& title) {
    const std::vector<std::string> numbers = TokenSplit(TitleValue(title, "Lattice"));
    if (numbers.size() != 9)
        throw ZfError(
            "its title has no Lattice=\"ax ay az bx by bz cx cy cz\" (angstrom), which makes it a " +
            std::string("crystal"));
    gemmi::Mat33 axes;
    for (int i = 0; i < 9; ++i)
        axes[i % 3][i / 3] = StrictNumber(numbers[static_cast<std::size_t>(i)], "Lattice");
    if (axes.determinant() == 0.0) throw ZfError("its Lattice has no volume");
    return axes;
}

MoleculeAtom ReadAtom(const std::string& line, const Columns& columns) {
    const std::vector<std::string> fields = TokenSplit(line);
    if (fields.size() < columns.count) throw ZfError("too few columns in the line \"" + line + "\"");
    const auto number = [&](std::size_t column) {
        return StrictNumber(fields[column], "in the line \"" + line + "\"");
    };
    const std::size_t p = columns.position;
    const gemmi::Vec3 position(number(p), number(p + 1), number(p + 2));
    return {fields[columns.species], position, columns.Uiso > 0 ? number(columns.Uiso) : 0.0};
}

/// The first frame of an XYZ text.
struct XyzFrame {
    explicit XyzFrame(const std::string& text) {
        std::istringstream stream(text);
        std::string line;
        std::getline(stream, line);
        std::getline(stream, title);
        const double count =
            StrictNumber(TokenSplit(line).empty() ? line : TokenSplit(line)[0], "number of atoms");
        const Columns columns = ReadProperties(TitleValue(title, "Properties"));
        for (double i = 0.0; i < count; ++i) {
            if (!std::getline(stream, line)) throw ZfError("it has fewer atoms than its first line says");
            atoms.push_back(ReadAtom(line, columns));
        }
    }

    std::string title;
    std::vector<MoleculeAtom> atoms;
};

}  // namespace

CrystalCell ParseXyzCell(const std::string& text) {
    const XyzFrame frame(text);
    CrystalCell cell;
    cell.axes = ReadLattice(frame.title);
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    for (const MoleculeAtom& atom : frame.atoms)
        cell.atoms.push_back({atom.element, reciprocal.multiply(atom.position), atom.Uiso_angstrom2});
    return cell;
}

std::vector<MoleculeAtom> ParseXyzMolecule(const std::string& text) {
    constexpr std::size_t kMostAtoms = 500;
    const XyzFrame frame(text);
    if (frame.atoms.empty()) throw ZfError("it has no atoms");
    if (frame.atoms.size() > kMostAtoms)
        throw ZfError("it has more than " + std::to_string(kMostAtoms) + " atoms, which is no molecule");
    return frame.atoms;
}

}  // namespace qvre
