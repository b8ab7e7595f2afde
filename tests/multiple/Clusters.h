#pragma once

#include <complex>
#include <cstdint>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Text.h"
#include "multiple/FullScattering.h"
#include "scattering/SphericalHarmonics.h"
#include "scattering/Tables.h"

// Requests that several tests share, and what a solution is compared by.

using Complex = std::complex<double>;

constexpr double kAngstrom = 1e-10;  // m

/// Phase shifts that fall off as those of atoms do: fast beyond `reach`.
inline std::vector<Complex> SmoothPhases(std::size_t lSize, double reach, double strength,
                                         double loss = 0.0) {
    std::vector<Complex> delta;
    for (std::size_t l = 0; l < lSize; ++l) {
        const double x = static_cast<double>(l) / reach;
        delta.push_back(Complex(strength, loss) * std::exp(-x * x) *
                        (1.0 + 0.3 * std::cos(static_cast<double>(l))));
    }
    return delta;
}

inline ZfLmComplexTable SWaveTable() {
    ZfLmComplexTable table(1);
    table.block[0] = 1.0;
    return table;
}

/// Seven atoms of three l sizes without any symmetry, k = 3 per angstrom.
inline FullScatteringRequest MixedCluster(double loss) {
    FullScatteringRequest request;
    request.k = 3.0 / kAngstrom;
    const std::vector<Vec3> positions = {{0.0, 0.0, 0.0},  {1.9, 0.3, 1.2},  {-0.4, 2.1, 0.9},
                                         {0.2, -0.3, 2.3}, {0.0, 0.0, -2.4}, {-2.2, -0.2, 0.4},
                                         {2.3, 2.2, 2.5}};
    for (const Vec3& r : positions)
        request.positions.push_back({r[0] * kAngstrom, r[1] * kAngstrom, r[2] * kAngstrom});
    request.species = {1, 0, 2, 0, 1, 2, 0};
    request.listOfSpecies = {{"A", ScatteringFactors(SmoothPhases(5, 2.2, 1.1, loss))},
                             {"B", ScatteringFactors(SmoothPhases(4, 1.6, -0.8, loss))},
                             {"C", ScatteringFactors(SmoothPhases(6, 2.6, 0.9, 0.5 * loss))}};
    return request;
}

/// An emitter and the atoms of an fcc crystal above and beside it up to that squared distance, in units of
/// half the cube (6: 30 atoms): symmetric under quarter turns about z. k = 6 per angstrom.
inline FullScatteringRequest FccCluster(int square, std::size_t lSize) {
    constexpr double a = 1.8 * kAngstrom;
    FullScatteringRequest request;
    request.k = 6.0 / kAngstrom;
    request.positions = {{0.0, 0.0, 0.0}};
    for (int x = -6; x <= 6; ++x)
        for (int y = -6; y <= 6; ++y)
            for (int z = 0; z <= 6; ++z) {
                const int r = x * x + y * y + z * z;
                if ((x + y + z) % 2 == 0 && r > 0 && r <= square)
                    request.positions.push_back({x * a, y * a, z * a});
            }
    request.species.assign(request.positions.size(), 0);
    request.listOfSpecies = {
        {"M", ScatteringFactors(SmoothPhases(lSize, 0.45 * static_cast<double>(lSize), 1.2))}};
    request.waves = {{0, SWaveTable()}};
    return request;
}

inline FullScattering Solved(const FullScatteringRequest& request) {
    ZfNotifyTerminateThreadCalculation notifier;
    return SolveFullScattering(request, notifier);
}

/// Far field of the tables and of the emitted wave, without exp(ikr)/(kr).
inline Complex FarFieldOf(const FullScatteringRequest& request, const std::vector<ZfLmComplexTable>& tables,
                          const EmissionFromAtom& emission, double theta, double phi) {
    ZfLmDoubleTable norm;
    ZfLmComplexTable y;
    std::int32_t largest = emission.table.L;
    for (const auto& table : tables) largest = std::max(largest, table.L);
    HarmonicTable(norm, y, largest, theta, phi);
    const Vec3 u = {std::sin(theta) * std::cos(phi), std::sin(theta) * std::sin(phi), std::cos(theta)};
    const auto add = [&](const ZfLmComplexTable& table) {
        Complex sum = 0.0;
        for (std::int32_t l = 0; l < table.L; ++l)
            for (std::int32_t m = -l; m <= l; ++m) sum += IPower(l + 1) * table.At(l, m) * y.At(l, m);
        return sum;
    };
    Complex field = 0.0;
    for (std::size_t i = 0; i < tables.size(); ++i) {
        const Complex phase = std::polar(1.0, -request.k * Dot(u, request.positions[i]));
        field += phase * add(tables[i]);
        if (i == emission.emitter) field += phase * add(emission.table);
    }
    return field;
}
