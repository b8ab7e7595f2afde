#include "scattering/ThetaRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

#include "foundation/Constants.h"
#include "scattering/PackedTable.h"

namespace qvre {

namespace {

constexpr std::int32_t kOrderStep = 32;

/// Of a sample whose size is 1: a hundred such factors stay below the rounding of the sum.
constexpr double kNegligible = 1e-17;

std::int32_t LatticeOf(std::int32_t block) {
    return kFirstLattice << block;
}

double RowTheta(std::int32_t block, std::size_t row) {
    const std::size_t i = block == 0 ? row + 1 : 2 * row + 1;
    return kPi * static_cast<double>(i) / LatticeOf(block);
}

/// Coefficients a_L of order M, L = M .. orders - 1, of the recurrence
/// a_L Theta_(L+1) = cos(theta) Theta_L - a_(L-1) Theta_(L-1).
std::vector<double> RecurrenceCoefficients(std::int32_t M, std::int32_t orders) {
    std::vector<double> a;
    for (std::int32_t L = M; L < orders; ++L)
        a.push_back(std::sqrt(((L + 1.0) * (L + 1.0) - static_cast<double>(M) * M) /
                              ((2.0 * L + 1.0) * (2.0 * L + 3.0))));
    return a;
}

/// Theta factor at a row, L = M, of the order M that it has come to.
class Sectorial {
public:
    explicit Sectorial(double theta) : sine_(std::sin(theta)) {}
    void Raise() {
        ++M_;
        value_ *= std::sqrt((2.0 * M_ + 1.0) / (2.0 * M_)) * sine_;
    }
    double Value() const { return value_; }

private:
    double sine_;
    double value_ = std::sqrt(0.5);
    std::int32_t M_ = 0;
};

/// Column of theta factors from the one of L = M upwards.
void FillColumn(double sectorial, double cosine, const std::vector<double>& a, std::vector<double>& column) {
    column.resize(a.size());
    double before = 0.0;
    double atBefore = 0.0;
    double now = sectorial;
    for (std::size_t i = 0; i < a.size(); ++i) {
        column[i] = now;
        const double above = (cosine * now - atBefore * before) / a[i];
        before = now;
        now = above;
        atBefore = a[i];
    }
}

/// Calls take(M, row, column) for the theta factors of every order and row.
template <class Take>
void ForColumns(std::int32_t block, std::int32_t orders, const Take& take) {
    const std::size_t rows = RowsOf(block);
    std::vector<Sectorial> sectorial;
    std::vector<double> cosines;
    for (std::size_t row = 0; row < rows; ++row) {
        sectorial.emplace_back(RowTheta(block, row));
        cosines.push_back(std::cos(RowTheta(block, row)));
    }
    std::vector<double> column;
    for (std::int32_t M = 0; M < orders; ++M) {
        const std::vector<double> a = RecurrenceCoefficients(M, orders);
        for (std::size_t row = 0; row < rows; ++row) {
            FillColumn(sectorial[row].Value(), cosines[row], a, column);
            take(M, row, column);
            sectorial[row].Raise();
        }
    }
}

ThetaRows MakeThetaRows(std::int32_t block, std::int32_t orders) {
    ThetaRows result;
    result.orders = orders;
    const std::size_t rows = RowsOf(block);
    result.limit.assign(rows / kRowTile, 0);
    std::size_t count = 0;
    for (std::int32_t M = 0; M < orders; ++M) {
        result.first.push_back(count);
        count += rows * result.Degrees(M);
    }
    result.values.resize(count);
    ForColumns(block, orders, [&](std::int32_t M, std::size_t row, const std::vector<double>& column) {
        const std::size_t tile = row / kRowTile;
        double* out = result.values.data() + result.TileBegin(M, tile) + row % kRowTile;
        for (const std::size_t first : {0U, 1U})
            for (std::size_t i = first; i < column.size(); i += 2, out += kRowTile) *out = column[i];
        const auto counts = [](double factor) { return std::abs(factor) > kNegligible; };
        if (std::any_of(column.begin(), column.end(), counts)) result.limit[tile] = M + 1;
    });
    return result;
}

}  // namespace

std::size_t RowsOf(std::int32_t block) {
    const auto lattice = static_cast<std::size_t>(LatticeOf(block));
    return block == 0 ? lattice / 2 : lattice / 4;
}

const ThetaRows& ThetaRowsOf(std::int32_t block, std::int32_t orders) {
    struct Entry {
        std::once_flag flag;
        ThetaRows rows;
    };
    static std::array<std::array<Entry, kLargestOrder / kOrderStep>, kRowBlocks> tables;
    const std::int32_t step = (orders + kOrderStep - 1) / kOrderStep;
    Entry& entry = tables.at(static_cast<std::size_t>(block)).at(static_cast<std::size_t>(step) - 1);
    std::call_once(entry.flag, [&] { entry.rows = MakeThetaRows(block, step * kOrderStep); });
    return entry.rows;
}

std::vector<double> ProjectionWeights(std::int32_t block, std::int32_t lSize) {
    const std::size_t rows = RowsOf(block);
    const auto n = static_cast<std::size_t>(lSize);
    std::vector<double> weights(n * (n + 1) / 2 * rows);
    ForColumns(block, lSize, [&](std::int32_t m, std::size_t row, const std::vector<double>& column) {
        const double sine = std::sin(RowTheta(block, row));
        const bool equator = block == 0 && row + 1 == rows;
        const double factor = equator ? sine : 2.0 * sine;
        for (std::size_t i = 0; i < column.size(); ++i) {
            const std::size_t l = static_cast<std::size_t>(m) + i;
            weights[(l * (l + 1) / 2 + static_cast<std::size_t>(m)) * rows + row] = factor * column[i];
        }
    });
    return weights;
}

}  // namespace qvre
