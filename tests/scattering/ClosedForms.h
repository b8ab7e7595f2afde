#pragma once

#include <cmath>
#include <complex>

#include "foundation/Constants.h"
#include "foundation/Matrices.h"
#include "scattering/SphericalHarmonics.h"

using namespace qvre;

/// c_lm = factor(l) conj(Y_lm) in the direction of `v`.
template <class Factor>
ZfLmComplexTable TableAlong(const ZfLDoubleMatrix& v, std::int32_t lSize, Factor factor) {
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    const double* p = v.Data();
    HarmonicTable(norm, y, lSize, std::acos(p[2] / std::sqrt(NormSquared(v))), std::atan2(p[1], p[0]));
    for (std::int32_t l = 0; l < lSize; ++l)
        for (std::int32_t m = -l; m <= l; ++m) y.At(l, m) = factor(l) * std::conj(y.At(l, m));
    return y;
}

/// h_0(k|r - R|) = 4 pi sum j_l(kr) h_l(kR) Y_lm(r) conj(Y_lm(R)) for r < R (DLMF 10.60.2): the table of a
/// source h_0 Y_00 at R.
inline ZfLmComplexTable TableOfSWave(const ZfLDoubleMatrix& R, double k, std::int32_t lSize) {
    const double x = k * std::sqrt(NormSquared(R));
    return TableAlong(R, lSize, [x](std::int32_t l) {
        const auto order = static_cast<unsigned>(l);
        return std::sqrt(4.0 * kPi) *
               std::complex<double>(std::sph_bessel(order, x), std::sph_neumann(order, x));
    });
}

/// Root of the summed squares, by that of the truth times `factor(l)`.
template <class Factor>
double RelativeError(const ZfLmComplexTable& table, const ZfLmComplexTable& truth, Factor factor) {
    double error = 0.0;
    double size = 0.0;
    for (std::int32_t l = 0; l < truth.L; ++l) {
        for (std::int32_t m = -l; m <= l; ++m) {
            error += std::norm(table.At(l, m) - factor(l) * truth.At(l, m));
            size += std::norm(factor(l) * truth.At(l, m));
        }
    }
    return std::sqrt(error / size);
}
