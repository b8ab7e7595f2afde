#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <span>

#include "input/LmTable.h"

using namespace qvre;

/// Coefficients of no symmetry.
inline void FillTable(ZfLmComplexTable& table, double start) {
    for (std::complex<double>& a : table.block) {
        a = {std::sin(start), std::cos(2.0 * start)};
        start += 0.7;
    }
}

inline ZfLmComplexTable FullTable(std::int32_t lSize, double start) {
    ZfLmComplexTable table(lSize);
    FillTable(table, start);
    return table;
}

/// Largest difference of the elements, over the largest element of b.
inline double Difference(std::span<const ZfLmComplexTable> a, std::span<const ZfLmComplexTable> b) {
    double difference = 0.0;
    double size = 0.0;
    for (std::size_t i = 0; i < b.size(); ++i) {
        if (a[i].L != b[i].L) return std::numeric_limits<double>::infinity();
        for (std::size_t j = 0; j < b[i].block.size(); ++j) {
            difference = std::max(difference, std::abs(a[i].block[j] - b[i].block[j]));
            size = std::max(size, std::abs(b[i].block[j]));
        }
    }
    return difference / size;
}

inline double Difference(const ZfLmComplexTable& a, const ZfLmComplexTable& b) {
    return Difference({&a, 1}, {&b, 1});
}
