#include "prepare/cluster/Superstructure.h"

#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <optional>
#include <regex>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr int kMostCells = 100;

gemmi::Vec3 Turned(const gemmi::Vec3& v, double angle_deg) {
    const double c = std::cos(gemmi::rad(angle_deg));
    const double s = std::sin(gemmi::rad(angle_deg));
    return {c * v.x - s * v.y, s * v.x + c * v.y, 0.0};
}

/// The whole numbers that make a vector of the lattice; nothing when it is none. Wood's notation rounds its
/// angles.
std::optional<std::array<int, 2>> InLattice(const gemmi::Vec3& v, const SurfaceLattice& lattice) {
    constexpr double kRounding = 0.03;
    const auto& [a, b] = lattice;
    const double area = a.x * b.y - a.y * b.x;
    const double first = (v.x * b.y - v.y * b.x) / area;
    const double second = (a.x * v.y - a.y * v.x) / area;
    if (std::abs(first - std::round(first)) > kRounding || std::abs(second - std::round(second)) > kRounding)
        return std::nullopt;
    return std::array{static_cast<int>(std::lround(first)), static_cast<int>(std::lround(second))};
}

/// "2", "r3", "sqrt3" or "2r3".
double LengthOf(const std::smatch& match, std::size_t first) {
    const double factor = match[first].length() > 0 ? std::stod(match[first]) : 1.0;
    return match[first + 1].length() > 0 ? factor * std::sqrt(std::stod(match[first + 1])) : factor;
}

Superstructure FromMatrix(const std::array<int, 4>& matrix, const std::string& text) {
    Superstructure superstructure{matrix};
    if (superstructure.Cells() < 0)  // the same lattice, right-handed
        superstructure.matrix = {matrix[2], matrix[3], matrix[0], matrix[1]};
    const int cells = superstructure.Cells();
    if (cells == 0) throw ZfError("The superstructure " + text + " has no area: its vectors are parallel");
    if (cells > kMostCells)
        throw ZfError(fmt::format("The superstructure {} has {} cells; more than {} are not made", text,
                                  cells, kMostCells));
    return superstructure;
}

std::optional<std::array<int, 4>> MatrixOf(const std::string& text) {
    static const std::regex kMatrix(
        R"(\s*\[?\s*(-?\d{1,3})[\s,]+(-?\d{1,3})[\s,;/]+(-?\d{1,3})[\s,]+(-?\d{1,3})\s*\]?\s*)");
    std::smatch match;
    if (!std::regex_match(text, match, kMatrix)) return std::nullopt;
    return std::array{std::stoi(match[1]), std::stoi(match[2]), std::stoi(match[3]), std::stoi(match[4])};
}

}  // namespace

SurfaceLattice Superstructure::Of(const SurfaceLattice& lattice) const {
    return {lattice[0] * matrix[0] + lattice[1] * matrix[1], lattice[0] * matrix[2] + lattice[1] * matrix[3]};
}

std::vector<std::array<int, 2>> Superstructure::CellsInside() const {
    const int cells = Cells();
    const int reach = std::abs(matrix[0]) + std::abs(matrix[1]) + std::abs(matrix[2]) + std::abs(matrix[3]);
    std::vector<std::array<int, 2>> inside;
    for (int i = -reach; i <= reach; ++i)
        for (int j = -reach; j <= reach; ++j) {
            const int first = i * matrix[3] - j * matrix[2];  // fractions of the larger cell, times `cells`
            const int second = j * matrix[0] - i * matrix[1];
            if (first >= 0 && first < cells && second >= 0 && second < cells) inside.push_back({i, j});
        }
    return inside;
}

Superstructure ParseSuperstructure(const std::string& text, const SurfaceLattice& lattice) {
    if (text.empty()) return {};
    if (const auto matrix = MatrixOf(text)) return FromMatrix(*matrix, text);
    static const std::regex kWood(
        R"((p|c)?\(?(\d{0,2})(?:(?:r|sqrt|√)(\d{1,2}))?(?:x|×)(\d{0,2})(?:(?:r|sqrt|√)(\d{1,2}))?\)?(?:[- ]?R(\d{1,3}(?:\.\d{1,4})?)(?:deg|°)?)?)");
    std::smatch match;
    const bool isRead = std::regex_match(text, match, kWood) && match[2].length() + match[3].length() > 0 &&
                        match[4].length() + match[5].length() > 0;
    if (!isRead)
        throw ZfError("\"" + text +
                      "\" is no superstructure: write it like c(2x2), p(2x1), (r3xr3)R30, or the four "
                      "numbers of a matrix, 1 1 -1 1");
    const double angle_deg = match[6].length() > 0 ? std::stod(match[6]) : 0.0;
    gemmi::Vec3 first = Turned(lattice[0], angle_deg) * LengthOf(match, 2);
    gemmi::Vec3 second = Turned(lattice[1], angle_deg) * LengthOf(match, 4);
    if (match[1] == "c") {
        const gemmi::Vec3 sum = (first + second) * 0.5;
        second = (second - first) * 0.5;
        first = sum;
    }
    const auto rowOne = InLattice(first, lattice);
    const auto rowTwo = InLattice(second, lattice);
    if (!rowOne || !rowTwo)
        throw ZfError("The superstructure " + text +
                      " does not fit the lattice of this surface: give its matrix, 1 1 -1 1");
    return FromMatrix({(*rowOne)[0], (*rowOne)[1], (*rowTwo)[0], (*rowTwo)[1]}, text);
}

}  // namespace qvre
