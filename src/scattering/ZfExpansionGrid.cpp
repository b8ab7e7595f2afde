#include "scattering/ZfExpansionGrid.h"

#include <algorithm>

#include "scattering/ZfSphericalBessel.h"

void ZfExpansionGrid::BuildGrid() {
    if (!rebuild) return;
    const std::int32_t groups = (lSize + groupSize - 1) / groupSize;
    waveNumber = 0.0;
    groupKr.assign(static_cast<std::size_t>(groups), 0.0);
    groupRadius.clear();
    besselAtGroup.assign(static_cast<std::size_t>(lSize), 0.0);

    std::vector<double> best(static_cast<std::size_t>(groups), 0.0);
    ZfSphericalBessel bessel;
    for (double x = 0.0; x < 1.5 * lSize; x += 0.01) {
        bessel.Calculate(lSize, x);
        for (std::int32_t g = 0; g < groups; ++g) {
            const std::int32_t begin = g * groupSize;
            const std::int32_t end = std::min(begin + groupSize, lSize);
            double product = 1.0;
            for (std::int32_t l = begin; l < end; ++l) product *= bessel.J(l);
            if (!(product > best[static_cast<std::size_t>(g)])) continue;
            best[static_cast<std::size_t>(g)] = product;
            groupKr[static_cast<std::size_t>(g)] = x;
            for (std::int32_t l = begin; l < end; ++l)
                besselAtGroup[static_cast<std::size_t>(l)] = bessel.J(l);
        }
    }

    lOfIndex.SetSize(lSize);
    mOfIndex.SetSize(lSize);
    for (std::int32_t l = 0; l < lSize; ++l) {
        for (std::int32_t m = -l; m <= l; ++m) {
            lOfIndex.At(l, m) = l;
            mOfIndex.At(l, m) = m;
        }
    }
    rebuild = false;
}

void ZfExpansionGrid::SetWaveNumber(double k) {
    if (k == waveNumber && groupRadius.size() == groupKr.size()) return;
    waveNumber = k;
    groupRadius.clear();
    for (const double kr : groupKr) groupRadius.push_back(kr / k);
}
