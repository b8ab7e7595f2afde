#include "pattern/PatternTableOperations.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "foundation/Constants.h"
#include "foundation/ZfError.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

namespace {

constexpr double kPerMetre_A = 1e10;

double GridZ(std::int32_t j, std::int32_t angles) {
    return 2.0 * j / (angles - 1.0) - 1.0;
}

/// Row of the first extremum of a line from the last angle down, of a plateau its farther end; -1 if there
/// is none. The ends are no extrema. `sign` 1 looks for a maximum, -1 for a minimum.
std::int32_t FirstExtremum(const ZfLDoubleMatrix& table, std::int32_t line, double sign) {
    bool approaching = false;
    for (std::int32_t j = table.RowSize - 2; j >= 0; --j) {
        const double step = sign * (table.ValueAt(line, j) - table.ValueAt(line, j + 1));
        if (step > 0) approaching = true;
        if (step < 0 && approaching) return j + 1;
    }
    return -1;
}

double SumOfSquares(const ZfLDoubleMatrix& table, std::int32_t line) {
    double sum = 0.0;
    for (std::int32_t j = 0; j < table.RowSize; ++j) sum += table.ValueAt(line, j) * table.ValueAt(line, j);
    return sum;
}

double ForwardSumOfSquares(const ZfLDoubleMatrix& table, std::int32_t line) {
    const double d = 4.0 / (table.RowSize - 1.0);
    double sum = 0.0;
    for (std::int32_t j = 0; j < table.RowSize; ++j) {
        const double t = (table.RowSize - 1 - j) * d;
        const double value = std::exp(-t * t) * table.ValueAt(line, j);
        sum += value * value;
    }
    return sum;
}

double FirstMaximum(const ZfLDoubleMatrix& table, std::int32_t line) {
    const std::int32_t j = FirstExtremum(table, line, 1.0);
    return j < 0 ? 0.0 : table.ValueAt(line, j);
}

double NormalisationFactor(const ZfLDoubleMatrix& table, std::int32_t line, double distance,
                           std::int32_t type) {
    switch (type) {
        case 0:
            return distance * kPerMetre_A;
        case 1:
            return 1.0;
        case 2:
            return 1.0 / std::sqrt(SumOfSquares(table, line));
        case 3:
            return 1.0 / FirstMaximum(table, line);
        case 4:
            return 1.0 / ForwardSumOfSquares(table, line);
        case 5:
            return std::sqrt(distance * kPerMetre_A);
        default:
            throw ZfError("Undefined normalisation type:" + std::to_string(type));
    }
}

double Window(std::int32_t type, double x) {
    if (type == 1) return std::max(0.0, std::cos(x / 2));
    if (type == 2) return std::max(0.0, 0.5 * std::cos(x) + 0.5);
    return 0.46 * std::cos(x) + 0.54;
}

}  // namespace

namespace qvre {

ZfLDoubleMatrix ModulationFunction(const ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct) {
    return DivideElements(Subtract(total, direct), direct);
}

ZfLDoubleMatrix InterferencePhase(const ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct,
                                  const ZfLDoubleMatrix& scattered) {
    direct.CheckSameShape(scattered);
    ZfLDoubleMatrix product;
    product.CopyShape(direct);
    for (std::int64_t i = 0; i < product.Count(); ++i)
        product.Data()[i] = 2.0 * std::sqrt(direct.Data()[i]) * std::sqrt(scattered.Data()[i]);
    return DivideElements(Subtract(Subtract(total, direct), scattered), product);
}

ZfLDoubleMatrix Modulus(const ZfLDoubleMatrix& x, const ZfLDoubleMatrix& y) {
    x.CheckSameShape(y);
    ZfLDoubleMatrix result;
    result.CopyShape(x);  // a copy would empty a temporary
    for (std::int64_t i = 0; i < x.Count(); ++i) result.Data()[i] = std::hypot(x.Data()[i], y.Data()[i]);
    return result;
}

void SmoothOverWaveNumber(ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct,
                          const ZfLDoubleMatrix& scattered, const ZfLDoubleMatrix& distances,
                          const ZfLDoubleMatrix& cosines, double sigma) {
    for (std::int32_t i = 0; i < total.ColSize; ++i) {
        for (std::int32_t j = 0; j < total.RowSize; ++j) {
            const double t = sigma * distances.VectorValueAt(i) * (1.0 - cosines.VectorValueAt(j));
            const double background = direct.ValueAt(i, j) + scattered.ValueAt(i, j);
            total.At(i, j) = background + (total.ValueAt(i, j) - background) * std::exp(-t * t / 2);
        }
    }
}

std::vector<double> FirstMinima(const ZfLDoubleMatrix& table) {
    std::vector<double> minima;
    for (std::int32_t i = 0; i < table.ColSize; ++i) {
        const std::int32_t j = FirstExtremum(table, i, -1.0);
        minima.push_back(j < 0 ? 0.0 : GridZ(j, table.RowSize));
    }
    return minima;
}

}  // namespace qvre

ZfLDoubleMatrix CompareToLast(const ZfLDoubleMatrix& total) {
    ZfLDoubleMatrix result;
    result.CopyShape(total);
    for (std::int32_t i = 0; i < total.ColSize; ++i) {
        const double last = std::sqrt(total.ValueAt(i, total.RowSize - 1));
        for (std::int32_t j = 0; j < total.RowSize; ++j)
            result.At(i, j) = 1.0 - std::sqrt(total.ValueAt(i, j)) / last;
    }
    return result;
}

std::vector<double> Normalise(ZfLDoubleMatrix& table, const ZfLDoubleMatrix& distances, std::int32_t type) {
    std::vector<double> factors;
    for (std::int32_t i = 0; i < table.ColSize; ++i) {
        const double f = NormalisationFactor(table, i, distances.VectorValueAt(i), type);
        for (std::int32_t j = 0; j < table.RowSize; ++j) table.At(i, j) *= f;
        factors.push_back(f);
    }
    return factors;
}

void ApplyMask(ZfLDoubleMatrix& table, std::int32_t type, const std::vector<double>& starts) {
    if (type == 0) return;
    if (type < 0 || type > 3) throw ZfError("Proc Mask ERROR, undefined type:" + std::to_string(type));
    for (std::int32_t i = 0; i < table.ColSize; ++i) {
        const double z0 = CheckedAt(starts, i);
        for (std::int32_t j = 0; j < table.RowSize; ++j) {
            const double z = GridZ(j, table.RowSize);
            double& value = table.At(i, j);
            value = z < z0 ? 0.0 : value * Window(type, (1.0 - z) / (1.0 - z0) * kPi);
        }
    }
}
