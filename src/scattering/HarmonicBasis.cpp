#include "scattering/HarmonicBasis.h"

#include <cmath>

#include "foundation/Constants.h"
#include "scattering/SphericalHarmonics.h"

namespace qvre {

namespace {

std::vector<double> MakeGammas() {
    std::vector<double> gammas;
    for (std::int32_t l = 0; l <= kLargestKernelL; ++l) {
        const double square = (l - 1.0) * (l - 1.0);
        for (std::int32_t m = 0; m <= l; ++m)
            gammas.push_back(m > l - 2 ? 0.0 : (square - m * m) / (4.0 * square - 1.0));
    }
    return gammas;
}

/// s_lm of Y(l, -m) = s_lm p_lm (x - i y)^m, at the place of (l, m).
std::vector<double> MakeNorms() {
    std::vector<double> norms(HarmonicIndex(kLargestKernelL, 0));
    double first = std::sqrt(0.5 / kTwoPi);
    for (std::int32_t m = 0; m < kLargestKernelL; ++m) {
        if (m > 0) first *= std::sqrt((2.0 * m + 1.0) / (2.0 * m));
        double norm = first;
        norms[HarmonicIndex(m, m)] = norm;
        for (std::int32_t l = m + 1; l < kLargestKernelL; ++l) {
            norm *=
                std::sqrt((4.0 * l * l - 1.0) / (static_cast<double>(l) * l - static_cast<double>(m) * m));
            norms[HarmonicIndex(l, m)] = norm;
        }
    }
    return norms;
}

}  // namespace

const double* HarmonicGammas() {
    static const std::vector<double> gammas = MakeGammas();
    return gammas.data();
}

std::vector<HarmonicPair> HarmonicPairs(const ZfLmComplexTable& table) {
    static const std::vector<double> norms = MakeNorms();
    std::vector<HarmonicPair> pairs(HarmonicIndex(table.L, 0));
    for (std::int32_t l = 0; l < table.L; ++l) {
        for (std::int32_t m = 0; m <= l; ++m) {
            const double s = norms[HarmonicIndex(l, m)];
            const std::complex<double> minus = table.At(l, -m);
            const std::complex<double> plus = m % 2 == 1 ? -table.At(l, m) : table.At(l, m);
            HarmonicPair& pair = pairs[HarmonicIndex(l, m)];
            pair.c = m == 0 ? s * plus : s * (plus + minus);
            if (m > 0)
                pair.d = s * std::complex<double>(minus.imag() - plus.imag(), plus.real() - minus.real());
        }
    }
    return pairs;
}

}  // namespace qvre
