#include "multiple/PhaseShiftGuard.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "scattering/TranslationTables.h"

namespace qvre {

namespace {

using Complex = std::complex<double>;

constexpr double kSmallT = 0.02;  // about a degree

/// h1_l(x) for l < count, upwards.
std::vector<Complex> Outgoing(double x, std::size_t count) {
    const Complex i(0.0, 1.0);
    std::vector<Complex> h = {-i * std::exp(i * x) / x};
    h.push_back(h[0] * (1.0 / x - i));
    for (std::size_t l = 1; h.size() < count; ++l)
        h.push_back((2.0 * static_cast<double>(l) + 1.0) / x * h[l] - h[l - 1]);
    return h;
}

}  // namespace

std::vector<double> LargestCoaxial(double x, std::size_t lSize) {
    std::vector<double> largest(lSize * lSize, 0.0);
    const std::vector<Complex> h = Outgoing(x, 2 * lSize + 1);
    for (std::size_t m = 0; m < lSize; ++m) {
        const CoaxialTable& table = CoaxialTableOf(static_cast<std::int32_t>(m));
        const std::size_t columns = lSize - m;
        std::vector<Complex> before;
        std::vector<Complex> now;
        for (std::size_t k = 0; k < 2 * columns - 1; ++k)
            now.push_back(table.first[k] * h[m + k] * std::pow(x, -static_cast<double>(m)));
        for (std::size_t i = 0; i < columns; ++i) {  // l = m + i, rows L = m + k
            for (std::size_t k = i; k < columns; ++k) {
                const double size = std::abs(now[k]);
                double& upper = largest[(m + i) * lSize + m + k];
                // Not a number counts as infinite: both come of numbers that are too large.
                upper = size <= std::numeric_limits<double>::max() ? std::max(upper, size)
                                                                   : std::numeric_limits<double>::infinity();
                largest[(m + k) * lSize + m + i] = upper;
            }
            std::vector<Complex> next(now.size());
            for (std::size_t k = i + 1; k + i + 2 < 2 * columns; ++k) {
                Complex sum = table.a[k - 1] * now[k - 1] - table.a[k] * now[k + 1];
                if (i > 0) sum += table.a[i - 1] * before[k];
                next[k] = sum / table.a[i];
            }
            before = std::move(now);
            now = std::move(next);
        }
    }
    return largest;
}

std::size_t SoundLSize(const std::vector<Complex>& t, double x) {
    const std::vector<double> largest = LargestCoaxial(x, t.size());
    const auto isSmall = [&](std::size_t l) { return std::abs(t[l]) < kSmallT; };
    const auto growth = [&](std::size_t l) {
        return t[l] == 0.0 ? 0.0 : std::abs(t[l]) * largest[l * t.size() + l];
    };
    for (std::size_t l = 0; l < t.size(); ++l) {
        if (!isSmall(l) || !(growth(l) > 1.0)) continue;
        while (l > 0 && isSmall(l - 1) && growth(l - 1) < growth(l)) --l;
        return l + 1;
    }
    return t.size();
}

PairGrowth LargestGrowth(const std::vector<Complex>& t1, const std::vector<Complex>& t2, double x) {
    const std::size_t lSize = std::max(t1.size(), t2.size());
    const std::vector<double> largest = LargestCoaxial(x, lSize);
    PairGrowth growth;
    for (std::size_t l1 = 0; l1 < t1.size(); ++l1) {
        for (std::size_t l2 = 0; l2 < t2.size(); ++l2) {
            const double t = std::sqrt(std::abs(t1[l1])) * std::sqrt(std::abs(t2[l2]));
            if (t == 0.0) continue;
            const double g = t * largest[l1 * lSize + l2];
            if (g > growth.g) growth = {g, l1, l2};
        }
    }
    return growth;
}

}  // namespace qvre
