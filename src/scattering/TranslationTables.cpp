#include "scattering/TranslationTables.h"

#include <array>
#include <cmath>
#include <mutex>

#include "scattering/PackedTable.h"

namespace qvre {

namespace {

template <class Table>
struct BuiltOnce {
    std::once_flag flag;
    Table table;
};

/// Column m of d(pi/2), mu = l .. 0, from the element at mu = l down: J_x D = D J_z. The direction is stable,
/// for it leads from small elements to large ones.
std::vector<double> Column(std::int32_t l, std::int32_t m) {
    std::vector<double> column(static_cast<std::size_t>(l) + 1);
    // d_lm(pi/2) = (-1)^(l-m) 2^-l sqrt((2l)! / (l+m)! / (l-m)!)
    double first = (l - m) % 2 == 0 ? 1.0 : -1.0;
    for (std::int32_t i = 1; i <= l - m; ++i) first *= std::sqrt((l + m + i) / (4.0 * i));
    for (std::int32_t i = 0; i < m; ++i) first *= 0.5;
    // The product above has 2^-(l-m); m further factors 1/2 make 2^-l.
    column.back() = first;
    double above = 0.0;
    for (std::int32_t mu = l; mu > 0; --mu) {
        const auto i = static_cast<std::size_t>(mu);
        const double now = column[i];
        column[i - 1] = (2.0 * m * now - std::sqrt((l + mu + 1.0) * (l - mu)) * above) /
                        std::sqrt((l - mu + 1.0) * (l + mu));
        above = now;
    }
    if ((l + m) % 2 == 1) column[0] = 0.0;
    return column;
}

std::vector<double> MakeQuarterTurn(std::int32_t l) {
    const auto size = static_cast<std::size_t>(l) + 1;
    std::vector<std::vector<double>> columns;
    for (std::int32_t m = 0; m <= l; ++m) columns.push_back(Column(l, m));
    std::vector<double> tiles;
    for (const std::size_t parity : {(size - 1) % 2, size % 2}) {
        for (std::size_t first = parity; first < size; first += 2 * kTurnTile) {
            for (const std::size_t odd : {0U, 1U}) {
                for (std::size_t m = odd; m < size; m += 2)
                    for (std::size_t mu = first; mu < first + 2 * kTurnTile; mu += 2)
                        tiles.push_back(mu < size ? columns[m][mu] : 0.0);
            }
        }
    }
    return tiles;
}

CoaxialTable MakeCoaxialTable(std::int32_t m) {
    CoaxialTable table;
    double sectorial = 1.0;  // (2m+1)!! / (2m)!!, and (L+m)! / (L-m)! = (2m)! at L = m
    for (std::int32_t i = 1; i <= m; ++i) sectorial *= std::sqrt((2.0 * i + 1.0) / (2.0 * i));
    for (std::int32_t i = 1; i <= 2 * m; ++i) sectorial *= std::sqrt(static_cast<double>(i));
    double belowA = 0.0;
    for (std::int32_t L = m; L < kLargestOrder + kLargestTranslatedL; ++L) {
        const double a = std::sqrt(((L + 1.0) * (L + 1.0) - static_cast<double>(m) * m) /
                                   ((2.0 * L + 1.0) * (2.0 * L + 3.0)));
        table.a.push_back(a);
        table.above.push_back(a / kOrderScale);
        table.below.push_back(belowA * kOrderScale);
        table.first.push_back(sectorial * std::sqrt(2.0 * L + 1.0));
        sectorial *= std::sqrt((L + m + 1.0) / (L - m + 1.0));
        belowA = a;
    }
    return table;
}

}  // namespace

const double* QuarterTurn(std::int32_t l) {
    static std::array<BuiltOnce<std::vector<double>>, kLargestOrder> turns;
    auto& turn = turns.at(static_cast<std::size_t>(l));
    std::call_once(turn.flag, [&] { turn.table = MakeQuarterTurn(l); });
    return turn.table.data();
}

const CoaxialTable& CoaxialTableOf(std::int32_t m) {
    static std::array<BuiltOnce<CoaxialTable>, kLargestTranslatedL> tables;
    auto& entry = tables.at(static_cast<std::size_t>(m));
    std::call_once(entry.flag, [&] { entry.table = MakeCoaxialTable(m); });
    return entry.table;
}

}  // namespace qvre
