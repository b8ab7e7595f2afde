#include "scattering/ThetaRows.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>

#include "foundation/Constants.h"
#include "scattering/WaveTranslation.h"

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

/// Column of theta factors, L = M .. orders - 1, by the recurrence in L at fixed M.
std::vector<double> ThetaColumn(std::int32_t M, std::int32_t orders, double theta) {
    const double s = std::sin(theta);
    const double c = std::cos(theta);
    double now = std::sqrt(0.5);
    for (std::int32_t i = 1; i <= M; ++i) now *= std::sqrt((2.0 * i + 1.0) / (2.0 * i)) * s;
    double before = 0.0;
    double a = 0.0;
    std::vector<double> column;
    for (std::int32_t L = M; L < orders; ++L) {
        column.push_back(now);
        const double next = std::sqrt(((L + 1.0) * (L + 1.0) - static_cast<double>(M) * M) /
                                      ((2.0 * L + 1.0) * (2.0 * L + 3.0)));
        const double above = (c * now - a * before) / next;
        before = now;
        now = above;
        a = next;
    }
    return column;
}

ThetaRows MakeThetaRows(std::int32_t block, std::int32_t orders) {
    ThetaRows result;
    result.orders = orders;
    const std::size_t rows = RowsOf(block);
    result.limit.assign(rows / kRowTile, 0);
    for (std::int32_t M = 0; M < orders; ++M) {
        result.first.push_back(result.values.size());
        for (std::size_t tile = 0; tile < rows / kRowTile; ++tile) {
            std::array<std::vector<double>, kRowTile> columns;
            for (std::size_t r = 0; r < kRowTile; ++r)
                columns[r] = ThetaColumn(M, orders, RowTheta(block, tile * kRowTile + r));
            for (const std::size_t odd : {0U, 1U}) {
                for (std::size_t i = odd; i < columns[0].size(); i += 2) {
                    for (const std::vector<double>& column : columns) {
                        result.values.push_back(column[i]);
                        if (std::abs(column[i]) > kNegligible) result.limit[tile] = M + 1;
                    }
                }
            }
        }
    }
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
    for (std::size_t row = 0; row < rows; ++row) {
        const double theta = RowTheta(block, row);
        const bool equator = block == 0 && row + 1 == rows;
        const double factor = equator ? std::sin(theta) : 2.0 * std::sin(theta);
        for (std::int32_t m = 0; m < lSize; ++m) {
            const std::vector<double> column = ThetaColumn(m, lSize, theta);
            for (std::size_t i = 0; i < column.size(); ++i) {
                const std::size_t l = static_cast<std::size_t>(m) + i;
                weights[(l * (l + 1) / 2 + static_cast<std::size_t>(m)) * rows + row] = factor * column[i];
            }
        }
    }
    return weights;
}
