#include "scattering/WaveTranslation.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "ClosedForms.h"
#include "EveryTarget.h"
#include "Tables.h"

// The operator against closed forms and the waves written out, on every instruction set.

namespace {

using Vector = std::array<double, 3>;
using Complex = std::complex<double>;

constexpr double kDigits = 2e-13;

/// Displacements with no symmetry, and along the axes.
const std::vector<Vector> kDisplacements = {{3.1, -2.2, 4.0},  {-2.0, 5.0, -1.0}, {0.0, 0.0, 5.0},
                                            {0.0, 0.0, -4.0},  {6.0, 0.0, 0.0},   {0.0, -5.5, 0.0},
                                            {-0.05, 0.0, 5.1}, {1.0, 1.5, -12.0}};

enum class RadialKind { kOutgoing, kRegular };

/// One table a place, each with its displacement.
struct Pack {
    Pack(RadialKind radialKind, Complex waveNumber) : kind(radialKind), k(waveNumber) { geometry.Clear(); }

    void Set(std::size_t lane, const Vector& d, const ZfLmComplexTable& table) {
        geometry.Set(lane, d.data(), k);
        if (sources.size() < table.block.size()) sources.resize(table.block.size());
        for (std::size_t i = 0; i < table.block.size(); ++i) sources[i].Set(lane, table.block[i]);
        lSize = std::max(lSize, table.L);
    }
    void Translate(std::int32_t order) {
        geometry.CalculateRadial(order + lSize - 1);
        if (kind == RadialKind::kRegular) MakeRegular();
        targets.assign(static_cast<std::size_t>(order) * static_cast<std::size_t>(order), PackedComplex());
        AddTranslated(sources, lSize, geometry, order, targets, scratch);
    }
    /// j in place of h1.
    void MakeRegular() {
        const auto size = static_cast<std::int32_t>(geometry.radial.size());
        for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
            if (geometry.inverse.Get(lane) == 0.0) continue;
            const auto j = ScaledBessel(geometry.kR.Get(lane), size, kOrderScale);
            for (std::size_t l = 0; l < j.size(); ++l) geometry.radial[l].Set(lane, j[l]);
        }
    }
    ZfLmComplexTable Result(std::size_t lane, std::int32_t order) const {
        ZfLmComplexTable table(order);
        for (std::int32_t l = 0; l < order; ++l)
            for (std::int32_t m = -l; m <= l; ++m)
                table.At(l, m) =
                    targets[static_cast<std::size_t>(l * (l + 1) + m)].Get(lane) * std::pow(kOrderScale, -l);
        return table;
    }

    RadialKind kind;
    Complex k;
    std::int32_t lSize = 0;
    TranslationGeometry geometry;
    PackedTable sources;
    PackedTable targets;
    TranslationScratch scratch;
};

/// sum of c j_l Y_lm (regular) or c h_l Y_lm at a point, for real k.
Complex WaveAt(const ZfLmComplexTable& c, double k, const Vector& r, bool outgoing) {
    const double x = k * std::sqrt(r[0] * r[0] + r[1] * r[1] + r[2] * r[2]);
    const ZfLDoubleMatrix v = Vector3(r[0], r[1], r[2]);
    const ZfLmComplexTable y = TableAlong(v, c.L, [](std::int32_t) { return 1.0; });
    Complex sum = 0.0;
    for (std::int32_t l = 0; l < c.L; ++l) {
        const auto order = static_cast<unsigned>(l);
        const Complex f(std::sph_bessel(order, x), outgoing ? std::sph_neumann(order, x) : 0.0);
        for (std::int32_t m = -l; m <= l; ++m) sum += c.At(l, m) * f * std::conj(y.At(l, m));
    }
    return sum;
}

class Translation : public EveryTarget {};

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, Translation, AllTargets(), TargetName);

double One(std::int32_t) {
    return 1.0;
}

}  // namespace

// A wave of many l at points around its target, against its own series around the source.
TEST_P(Translation, KeepsTheWaveAtEveryPoint) {
    constexpr double k = 2.0;
    const std::vector<Vector> points = {{0.4, 0.3, -0.2}, {-0.5, 0.1, 0.6}, {0.0, 0.0, 0.7}};
    for (const std::int32_t lSize : {1, 2, 3, 5, 14, 21}) {
        for (const RadialKind kind : {RadialKind::kOutgoing, RadialKind::kRegular}) {
            Pack pack(kind, k);
            for (std::size_t i = 0; i < kDisplacements.size(); ++i)
                pack.Set(i, kDisplacements[i], FullTable(lSize, static_cast<double>(i)));
            constexpr std::int32_t order = 40;
            pack.Translate(order);
            for (std::size_t i = 0; i < kDisplacements.size(); ++i) {
                const ZfLmComplexTable c = pack.Result(i, order);
                for (const Vector& r : points) {
                    const auto& d = kDisplacements[i];
                    const Complex truth =
                        WaveAt(FullTable(lSize, static_cast<double>(i)), k,
                               {r[0] - d[0], r[1] - d[1], r[2] - d[2]}, kind == RadialKind::kOutgoing);
                    EXPECT_LT(std::abs(WaveAt(c, k, r, false) - truth), 1e-11 * std::abs(truth))
                        << "l size " << lSize << ", place " << i;
                }
            }
        }
    }
}

// Outgoing to a first centre, then regular to a second: the same as at once; and back again.
TEST_P(Translation, ComposesToOne) {
    for (const Complex k : {Complex(1.7), Complex(1.7, 0.15)}) {
        const Vector there = {5.0, -4.0, 6.0};
        const Vector step = {0.3, 0.2, -0.4};
        const Vector both = {there[0] + step[0], there[1] + step[1], there[2] + step[2]};
        const ZfLmComplexTable source = FullTable(5, 0.3);
        constexpr std::int32_t order = 20;
        constexpr std::int32_t kept = 4;
        Pack first(RadialKind::kOutgoing, k);
        first.Set(0, there, source);
        first.Set(5, both, source);
        first.Translate(order);
        Pack second(RadialKind::kRegular, k);
        second.Set(3, step, first.Result(0, order));
        second.Translate(order);
        Pack back(RadialKind::kRegular, k);
        back.Set(7, {-step[0], -step[1], -step[2]}, second.Result(3, order));
        back.Translate(kept);
        const auto part = [](const ZfLmComplexTable& table) {
            ZfLmComplexTable low(kept);
            for (std::size_t i = 0; i < low.block.size(); ++i) low.block[i] = table.block[i];
            return low;
        };
        EXPECT_LT(RelativeError(part(second.Result(3, order)), part(first.Result(5, order)), One), 1e-12);
        EXPECT_LT(RelativeError(back.Result(7, kept), part(first.Result(0, order)), One), 1e-12);
    }
}

// A source close to a large sphere needs hundreds of orders, whose radial functions leave the range of
// doubles.
TEST_P(Translation, ReachesTheLargestOrder) {
    constexpr double k = 1.0;
    const Vector d = {3.0, -9.0, 8.0};  // k R = 12.4
    const ZfLmComplexTable source = FullTable(7, 0.1);
    Pack pack(RadialKind::kOutgoing, k);
    pack.Set(2, d, source);
    pack.Translate(kLargestOrder);
    const double r = 0.85 * std::sqrt(9.0 + 81.0 + 64.0);  // on the z axis, where only m = 0 is left
    const auto j = ScaledBessel(k * r, kLargestOrder, 1.0 / kOrderScale);
    Complex sum = 0.0;
    for (std::size_t l = 0; l < j.size(); ++l)
        sum += pack.targets[l * (l + 1)].Get(2) * j[l] *
               std::sqrt((2.0 * static_cast<double>(l) + 1.0) / (4.0 * kPi));
    const Complex truth = WaveAt(source, k, {-d[0], -d[1], r - d[2]}, true);
    EXPECT_LT(std::abs(sum - truth), 1e-9 * std::abs(truth));
}
