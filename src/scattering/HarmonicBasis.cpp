#include "scattering/HarmonicBasis.h"

#include <cmath>

#include "scattering/SphericalHarmonics.h"

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

/// Y(l, -m) = s_lm p_lm exp(-i m phi) sin^m, for l = m .. n-1.
std::vector<double> Norms(std::int32_t n, std::int32_t m) {
    double norm = std::sqrt(0.5 / kTwoPi);
    for (std::int32_t i = 1; i <= m; ++i) norm *= std::sqrt((2.0 * i + 1.0) / (2.0 * i));
    std::vector<double> norms = {norm};
    for (std::int32_t l = m + 1; l < n; ++l) {
        norm *= std::sqrt((4.0 * l * l - 1.0) / (static_cast<double>(l) * l - static_cast<double>(m) * m));
        norms.push_back(norm);
    }
    return norms;
}

}  // namespace

const double* HarmonicGammas() {
    static const std::vector<double> gammas = MakeGammas();
    return gammas.data();
}

std::vector<HarmonicPair> HarmonicPairs(const ZfLmComplexTable& table) {
    const std::int32_t n = table.L;
    std::vector<HarmonicPair> pairs(HarmonicIndex(n, 0));
    for (std::int32_t m = 0; m < n; ++m) {
        const std::vector<double> norms = Norms(n, m);
        for (std::int32_t l = m; l < n; ++l) {
            const double s = norms[static_cast<std::size_t>(l - m)];
            const std::complex<double> minus = table.At(l, -m);
            const std::complex<double> plus = m % 2 == 1 ? -table.At(l, m) : table.At(l, m);
            HarmonicPair& pair = pairs[HarmonicIndex(l, m)];
            pair.c = m == 0 ? s * plus : s * (plus + minus);
            pair.d = m == 0
                         ? 0.0
                         : s * std::complex<double>(minus.imag() - plus.imag(), plus.real() - minus.real());
        }
    }
    return pairs;
}
