#include "prepare/cluster/Superstructure.h"

#include <fmt/format.h>

#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <sstream>
#include <string_view>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

constexpr int kMostCells = 100;

gemmi::Vec3 Turned(const gemmi::Vec3& v, double angle_deg) {
    const double c = std::cos(gemmi::rad(angle_deg));
    const double s = std::sin(gemmi::rad(angle_deg));
    return {c * v.x - s * v.y, s * v.x + c * v.y, 0.0};
}

constexpr int kLargestNumber = 999;  // of a matrix

/// The whole numbers that make a vector of the lattice; nothing when it is none. Wood's notation rounds its
/// angles.
std::optional<std::array<int, 2>> InLattice(const gemmi::Vec3& v, const SurfaceLattice& lattice) {
    constexpr double kRounding = 0.03;
    const auto& [a, b] = lattice;
    const double area = a.x * b.y - a.y * b.x;
    const double first = (v.x * b.y - v.y * b.x) / area;
    const double second = (a.x * v.y - a.y * v.x) / area;
    if (!(std::abs(first) <= kLargestNumber && std::abs(second) <= kLargestNumber)) return std::nullopt;
    if (std::abs(first - std::round(first)) > kRounding || std::abs(second - std::round(second)) > kRounding)
        return std::nullopt;
    return std::array{static_cast<int>(std::lround(first)), static_cast<int>(std::lround(second))};
}

/// Takes a notation apart from its front.
class NotationReader {
public:
    explicit NotationReader(std::string_view text) : rest_(text) {}

    bool IsDone() const { return rest_.empty(); }

    bool Take(std::string_view word) {
        if (!rest_.starts_with(word)) return false;
        rest_.remove_prefix(word.size());
        return true;
    }

    std::optional<double> Number() {
        double number = 0.0;
        const bool isDigit = !rest_.empty() && std::isdigit(static_cast<unsigned char>(rest_.front())) != 0;
        if (!isDigit) return std::nullopt;
        const auto [end, status] =
            std::from_chars(rest_.data(), rest_.data() + rest_.size(), number, std::chars_format::fixed);
        if (status != std::errc()) return std::nullopt;
        rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
        return number;
    }

    /// "2", "r3", "sqrt3" or "2r3".
    std::optional<double> Length() {
        const std::optional<double> factor = Number();
        if (!Take("sqrt") && !Take("√") && !Take("r")) return factor;
        const std::optional<double> square = Number();
        if (!square) return std::nullopt;
        return factor.value_or(1.0) * std::sqrt(*square);
    }

private:
    std::string_view rest_;
};

/// Wood's notation.
struct WoodNotation {
    bool isCentred = false;
    std::array<double, 2> lengths{};
    double angle_deg = 0.0;
};

std::optional<WoodNotation> ReadWood(const std::string& text) {
    NotationReader reader(text);
    WoodNotation wood;
    wood.isCentred = reader.Take("c");
    if (!wood.isCentred) reader.Take("p");
    const bool isBracketed = reader.Take("(");
    const std::optional<double> first = reader.Length();
    if (!first || (!reader.Take("x") && !reader.Take("×"))) return std::nullopt;
    const std::optional<double> second = reader.Length();
    if (!second || (isBracketed && !reader.Take(")"))) return std::nullopt;
    wood.lengths = {*first, *second};
    if (reader.IsDone()) return wood;
    if (!reader.Take("-")) reader.Take(" ");
    if (!reader.Take("R")) return std::nullopt;
    const std::optional<double> angle = reader.Number();
    if (!angle) return std::nullopt;
    wood.angle_deg = *angle;
    if (!reader.Take("deg")) reader.Take("°");
    return reader.IsDone() ? std::optional(wood) : std::nullopt;
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

/// Four whole numbers between brackets, blanks, commas, semicolons and slashes.
std::optional<std::array<int, 4>> MatrixOf(std::string text) {
    for (char& c : text)
        if (std::strchr("[],;/", c)) c = ' ';
    std::istringstream numbers(text);
    std::array<int, 4> matrix{};
    for (int& number : matrix)
        if (!(numbers >> number) || std::abs(number) > kLargestNumber) return std::nullopt;
    return (numbers >> std::ws).eof() ? std::optional(matrix) : std::nullopt;
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
    const std::optional<WoodNotation> wood = ReadWood(text);
    if (!wood)
        throw ZfError("\"" + text +
                      "\" is no superstructure: write it like c(2x2), p(2x1), (r3xr3)R30, or the four "
                      "numbers of a matrix, 1 1 -1 1");
    gemmi::Vec3 first = Turned(lattice[0], wood->angle_deg) * wood->lengths[0];
    gemmi::Vec3 second = Turned(lattice[1], wood->angle_deg) * wood->lengths[1];
    if (wood->isCentred) {
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
