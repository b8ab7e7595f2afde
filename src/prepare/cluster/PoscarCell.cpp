#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

#include "foundation/StrictNumber.h"
#include "foundation/Text.h"
#include "foundation/ZfError.h"
#include "prepare/cluster/CrystalSources.h"

// The format of VASP: G. Kresse, J. Furthmueller, Phys. Rev. B 54, 11169 (1996), manual of version 5,
// "POSCAR".

namespace qvre {

namespace {

using Fields = std::vector<std::string>;

/// The lines of a text, each with its fields; failures bring the number of the line.
class PoscarLines {
public:
    explicit PoscarLines(const std::string& text) : stream_(text) {}

    /// The next line, which has to be there.
    const Fields& Next(const char* what) {
        ++number_;
        std::string line;
        if (!std::getline(stream_, line)) Fail(fmt::format("it ends here, and there should be {}", what));
        fields_ = TokenSplit(line);
        fields_.erase(std::remove(fields_.begin(), fields_.end(), std::string()), fields_.end());
        return fields_;
    }

    double Number(std::size_t field, const char* what) const {
        if (field >= fields_.size()) Fail(fmt::format("there should be {}", what));
        return StrictNumber(fields_[field], fmt::format("line {}", number_));
    }

    gemmi::Vec3 Vector(const char* what) const { return {Number(0, what), Number(1, what), Number(2, what)}; }

    [[noreturn]] void Fail(const std::string& reason) const {
        throw ZfError(fmt::format("line {}: {}", number_, reason));
    }

private:
    std::istringstream stream_;
    int number_ = 0;
    Fields fields_;
};

/// Factors of the three Cartesian directions: one number for all, or three; one below 0 is minus the volume.
gemmi::Vec3 Scale(const Fields& fields, const PoscarLines& lines) {
    const double first = lines.Number(0, "the scale, a factor or minus the volume");
    if (fields.size() < 3) return {first, first, first};
    const gemmi::Vec3 scale = lines.Vector("the scale");
    if (!(scale.x > 0.0 && scale.y > 0.0 && scale.z > 0.0)) lines.Fail("three factors are all above 0");
    return scale;
}

gemmi::Mat33 Axes(PoscarLines& lines, gemmi::Vec3& scale) {
    gemmi::Mat33 axes;
    for (int axis = 0; axis < 3; ++axis) {
        lines.Next("a lattice vector");
        const gemmi::Vec3 vector = lines.Vector("three components of a lattice vector");
        for (int i = 0; i < 3; ++i) axes[i][axis] = vector.at(i);
    }
    const double volume = std::abs(axes.determinant());
    if (!(volume > 0.0) || scale.x == 0.0) throw ZfError("its lattice has no volume");
    if (scale.x < 0.0) {
        const double factor = std::cbrt(-scale.x / volume);
        scale = {factor, factor, factor};
    }
    for (int i = 0; i < 3; ++i)
        for (int axis = 0; axis < 3; ++axis) axes[i][axis] *= scale.at(i);
    return axes;
}

bool IsCount(const std::string& field) {
    return !field.empty() &&
           std::all_of(field.begin(), field.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// "Ti_pv" and "O/a3f1" name a potential behind the element.
std::string Element(const std::string& name) {
    return name.substr(0, name.find_first_of("_/"));
}

/// The element of each atom, from the line of names and that of counts.
Fields AtomElements(PoscarLines& lines) {
    constexpr double kMostAtoms = 200000;
    const Fields names = lines.Next("the elements");
    if (names.empty()) lines.Fail("there should be the elements");
    if (IsCount(names[0]))
        lines.Fail(
            "numbers of atoms stand where the elements should; put a line with the elements, such as Ti "
            "O, above them (the format of VASP 5)");
    const Fields counts = lines.Next("the number of atoms of each element");
    if (counts.size() < names.size())
        lines.Fail(fmt::format("there are {} numbers of atoms for {} elements", counts.size(), names.size()));
    Fields elements;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const double count = lines.Number(i, "a number of atoms");
        if (!IsCount(counts[i]) || static_cast<double>(elements.size()) + count > kMostAtoms)
            lines.Fail(counts[i] + " is no number of atoms");
        elements.insert(elements.end(), static_cast<std::size_t>(count), Element(names[i]));
    }
    return elements;
}

}  // namespace

CrystalCell ParsePoscar(const std::string& text) {
    PoscarLines lines(text);
    lines.Next("a title");
    gemmi::Vec3 scale = Scale(lines.Next("the scale"), lines);
    CrystalCell cell;
    cell.axes = Axes(lines, scale);
    const Fields elements = AtomElements(lines);
    const auto initial = [&lines](const Fields& fields) {
        if (fields.empty()) lines.Fail("there should be Selective dynamics, Direct or Cartesian");
        return static_cast<char>(fields[0][0] | 0x20);  // lower case
    };
    char mode = initial(lines.Next("Direct or Cartesian"));
    if (mode == 's') mode = initial(lines.Next("Direct or Cartesian"));
    if (mode != 'd' && mode != 'c' && mode != 'k')
        lines.Fail("there should be Direct or Cartesian, in front of the positions");
    const gemmi::Mat33 reciprocal = cell.Reciprocal();
    for (const std::string& element : elements) {
        lines.Next("the position of an atom");
        const gemmi::Vec3 position = lines.Vector("three coordinates of an atom");
        const gemmi::Vec3 cartesian(position.x * scale.x, position.y * scale.y, position.z * scale.z);
        cell.atoms.push_back({element, mode == 'd' ? position : reciprocal.multiply(cartesian), 0.0});
    }
    return cell;
}

}  // namespace qvre
