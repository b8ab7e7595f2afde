#include "scattering/WaveTranslation.h"

#include <algorithm>
#include <cmath>

#include "scattering/TranslationTables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/WaveTranslation.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/TranslationKernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

void FillPhases(const Part& part, const TranslationGeometry& geometry, std::size_t count,
                TranslationScratch& w) {
    const VC alpha = part.Load(geometry.alpha);
    const VC beta = part.Load(geometry.beta);
    const V one = hn::Set(part.d, 1.0);
    VC a = {one, hn::Zero(part.d)};
    VC b = a;
    for (std::size_t m = 0; m < count; ++m) {
        part.Store(a, w.alpha[m]);
        part.Store(m == 0 ? b : Scale(b, hn::Set(part.d, 2.0)), w.beta[m]);
        a = Mul(a, alpha);
        b = Mul(b, beta);
    }
}

/// Turns the sources of all degrees so that the translation is along z.
void TurnSources(const Part& part, const PackedTable& sources, std::size_t n, TranslationScratch& w) {
    const V two = hn::Set(part.d, 2.0);
    for (std::size_t l = 0; l < n; ++l) {
        TurnOnce(part, l, sources.data() + l * (l + 1), w.alpha.data(), w.beta.data(), w.u.data(),
                 w.v.data());
        Turn(part, l, l + 1, w.v.data(), [&](std::size_t m, VC e, VC o) HWY_ATTR {
            // w_m +- w_-m with w_m = (-1)^m (E - O), w_-m = (-1)^(l+m) (E + O)
            const V factor = m == 0 ? hn::Set(part.d, 1.0) : two;
            const V sign = m % 2 == 0 ? factor : hn::Neg(factor);
            const VC even = Scale(e, sign);
            const VC odd = Scale(o, hn::Neg(sign));
            MirrorSums& out = w.turned[m * n + l];
            part.Store(l % 2 == 0 ? even : odd, out.plus);
            part.Store(l % 2 == 0 ? odd : even, out.minus);
        });
    }
}

constexpr std::size_t kColumns = 4;  // of S, that are applied at once

/// S_Lm for L = m .. m + count - 1.
void FirstColumn(const Part& part, const CoaxialTable& table, const PackedComplex* radial, VC power,
                 std::size_t count, PackedComplex* column) {
    for (std::size_t i = 0; i < count; ++i)
        part.Store(Scale(Mul(part.Load(radial[i]), power), hn::Set(part.d, table.first[i])), column[i]);
}

/// S_L,l+1 from S_Ll and S_L,l-1; i is l - m.
void NextColumn(const Part& part, const CoaxialTable& table, std::size_t i, std::size_t count,
                const PackedComplex* HWY_RESTRICT before, const PackedComplex* HWY_RESTRICT now,
                PackedComplex* HWY_RESTRICT next) {
    const V inverse = hn::Set(part.d, 1.0 / table.a[i]);
    const V atBefore = hn::Set(part.d, i == 0 ? 0.0 : table.a[i - 1]);
    VC lower = part.Zero();
    VC middle = part.Load(now[0]);
    for (std::size_t k = 0; k < count; ++k) {
        const VC upper = part.Load(now[k + 1]);
        VC sum = Scale(lower, hn::Set(part.d, table.below[k]));
        sum = MulAdd(upper, hn::Set(part.d, -table.above[k]), sum);
        if (i > 0) sum = MulAdd(part.Load(before[k]), atBefore, sum);
        part.Store(Scale(sum, inverse), next[k]);
        lower = middle;
        middle = upper;
    }
}

/// sums[k] += sum over kCount columns of S times the sources.
template <std::size_t kCount>
HWY_INLINE void ApplyColumns(const Part& part, const PackedComplex* const* columns, const MirrorSums* sources,
                             std::size_t count, MirrorSums* HWY_RESTRICT sums) {
    VC plus[kCount];
    VC minus[kCount];
    for (std::size_t c = 0; c < kCount; ++c) {
        plus[c] = part.Load(sources[c].plus);
        minus[c] = part.Load(sources[c].minus);
    }
    for (std::size_t k = 0; k < count; ++k) {
        VC p = part.Load(sums[k].plus);
        VC q = part.Load(sums[k].minus);
        for (std::size_t c = 0; c < kCount; ++c) {
            const VC s = part.Load(columns[c][k]);
            p = MulAdd(s, plus[c], p);
            q = MulAdd(s, minus[c], q);
        }
        part.Store(p, sums[k].plus);
        part.Store(q, sums[k].minus);
    }
}

/// Translates the turned sources of order m, l = m .. n - 1, to L = m .. order - 1.
void MoveOrder(const Part& part, std::size_t m, std::size_t n, std::size_t order, const PackedComplex* radial,
               VC power, TranslationScratch& w) {
    const CoaxialTable& table = CoaxialTableOf(static_cast<std::int32_t>(m));
    const std::size_t count = order - m;
    const std::size_t degrees = n - m;
    PackedComplex* columns[kColumns + 2];  // the last two of the columns before, and the new ones
    for (std::size_t c = 0; c < kColumns + 2; ++c) columns[c] = w.columns.data() + c * w.columnSize;
    for (std::size_t k = 0; k < count; ++k) {
        part.Store(part.Zero(), w.sums[k].plus);
        part.Store(part.Zero(), w.sums[k].minus);
    }
    for (std::size_t first = 0; first < degrees; first += kColumns) {
        const std::size_t last = std::min(first + kColumns, degrees);
        for (std::size_t i = first; i < last; ++i) {
            PackedComplex* const column = columns[2 + i - first];
            const std::size_t length = count + degrees - 1 - i;
            if (i == 0)
                FirstColumn(part, table, radial + m, power, length, column);
            else
                NextColumn(part, table, i - 1, length, columns[i - first], columns[1 + i - first], column);
        }
        const MirrorSums* const sources = w.turned.data() + m * n + m + first;
        switch (last - first) {
            case 1:
                ApplyColumns<1>(part, columns + 2, sources, count, w.sums.data());
                break;
            case 2:
                ApplyColumns<2>(part, columns + 2, sources, count, w.sums.data());
                break;
            case 3:
                ApplyColumns<3>(part, columns + 2, sources, count, w.sums.data());
                break;
            default:
                ApplyColumns<kColumns>(part, columns + 2, sources, count, w.sums.data());
        }
        std::swap(columns[0], columns[kColumns]);
        std::swap(columns[1], columns[kColumns + 1]);
    }
    // |y_m|^2 + |y_-m|^2 is half the squares of the sums; at m = 0 one sum is y_0 and the other zero.
    const V half = hn::Set(part.d, m == 0 ? 1.0 : 0.5);
    for (std::size_t k = 0; k < count; ++k) {
        MirrorSums& out = w.moved[(m + k) * w.movedStride + m];
        const VC plus = part.Load(w.sums[k].plus);
        const VC minus = part.Load(w.sums[k].minus);
        part.Store(plus, out.plus);
        part.Store(minus, out.minus);
        const V square = hn::Add(MulConj(plus, plus).re, MulConj(minus, minus).re);
        double* const sum = w.power[m + k].re + part.first;
        hn::Store(hn::MulAdd(square, half, m == 0 ? hn::Zero(part.d) : hn::Load(part.d, sum)), part.d, sum);
    }
}

/// Turns the translated waves back and adds them to the tables of the targets.
void TurnBack(const Part& part, std::size_t n, std::size_t order, PackedTable& targets,
              TranslationScratch& w) {
    for (std::size_t l = 0; l < order; ++l) {
        AddTurnedBack(part, l, std::min(n, l + 1), w.moved.data() + l * w.movedStride, w.alpha.data(),
                      w.beta.data(), w.v.data(), targets.data() + l * (l + 1));
    }
}

void Move(const PackedTable& sources, std::size_t n, const TranslationGeometry& geometry, std::size_t order,
          TranslationScratch& w) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d)) {
        const Part part = {d, first};
        FillPhases(part, geometry, std::max(n, order), w);
        TurnSources(part, sources, n, w);
        const VC inverse = part.Load(geometry.inverse);
        VC power = {hn::Set(d, 1.0), hn::Zero(d)};
        for (std::size_t m = 0; m < std::min(n, order); ++m) {
            MoveOrder(part, m, n, order, geometry.radial.data(), power, w);
            power = Mul(power, inverse);
        }
    }
}

void TurnAllBack(std::size_t n, std::size_t order, PackedTable& targets, TranslationScratch& w) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d))
        TurnBack({d, first}, n, order, targets, w);
}

/// Upward recurrence of the scaled h1_l.
void Recur(const TranslationGeometry& geometry, std::size_t count, PackedComplex* radial) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d)) {
        const Part part = {d, first};
        const VC inverse = part.Load(geometry.inverse);
        VC before = part.Load(radial[0]);
        VC now = part.Load(radial[1]);
        const V scale2 = hn::Set(d, -kOrderScale * kOrderScale);
        for (std::size_t l = 1; l + 1 < count; ++l) {
            const V factor = hn::Set(d, (2.0 * static_cast<double>(l) + 1.0) * kOrderScale);
            const VC next = MulAdd(Mul(now, inverse), factor, Scale(before, scale2));
            part.Store(next, radial[l + 1]);
            before = now;
            now = next;
        }
    }
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace qvre {

HWY_EXPORT(Move);
HWY_EXPORT(TurnAllBack);
HWY_EXPORT(Recur);

void TranslationGeometry::Clear() {
    kR = inverse = alpha = beta = PackedComplex();
}

void TranslationGeometry::Set(std::size_t lane, const double* displacement, std::complex<double> k) {
    const double x = displacement[0];
    const double y = displacement[1];
    const double z = displacement[2];
    const double rho = std::sqrt(x * x + y * y);
    const double R = std::sqrt(x * x + y * y + z * z);
    kR.Set(lane, k * R);
    inverse.Set(lane, 1.0 / (k * R));
    alpha.Set(lane, rho > 0.0 ? std::complex<double>(-y / rho, x / rho) : std::complex<double>(0.0, 1.0));
    beta.Set(lane, {z / R, rho / R});
}

void TranslationGeometry::Remove(std::size_t lane) {
    for (PackedComplex* const value : {&kR, &inverse, &alpha, &beta}) value->Set(lane, 0.0);
    for (PackedComplex& f : radial) f.Set(lane, 0.0);
}

void TranslationGeometry::CalculateRadial(std::int32_t count) {
    const auto size = static_cast<std::size_t>(std::max(count, 2));
    radial.assign(size, PackedComplex());
    for (std::size_t lane = 0; lane < kTranslationPack; ++lane) {
        const std::complex<double> over = inverse.Get(lane);
        if (over == 0.0) continue;
        const std::complex<double> i(0.0, 1.0);
        const std::complex<double> first = -i * std::exp(i * kR.Get(lane)) * over;
        radial[0].Set(lane, first);
        radial[1].Set(lane, first * (over - i) * kOrderScale);
    }
    HWY_DYNAMIC_DISPATCH(Recur)(*this, size, radial.data());
}

std::vector<std::complex<double>> ScaledBessel(std::complex<double> x, std::int32_t count, double scale) {
    const auto size = static_cast<std::size_t>(count);
    std::vector<std::complex<double>> j(size, 0.0);
    if (x == 0.0) {
        j[0] = 1.0;
        return j;
    }
    // Far enough beyond the last order and the argument any start has died out. Kept in the scaled form, with
    // a rescaling of all whenever the numbers get large.
    const auto start = std::max(size, static_cast<std::size_t>(std::abs(x)) + 1) + 60 +
                       static_cast<std::size_t>(2.0 * std::cbrt(std::abs(x)));
    std::complex<double> above = 0.0;
    std::complex<double> now = 1e-280;
    for (std::size_t l = start; l > 0; --l) {
        if (l < size) j[l] = now;
        const std::complex<double> below =
            (2.0 * static_cast<double>(l) + 1.0) / x * now / scale - above / (scale * scale);
        above = now;
        now = below;
        if (std::abs(now) < 1e200) continue;
        constexpr double kDown = 0x1p-600;
        above *= kDown;
        now *= kDown;
        for (std::size_t i = l; i < size; ++i) j[i] *= kDown;
    }
    j[0] = now;
    // x (j_0 cos x + ... ) : (x sin x + cos x) j_0 - x cos x j_1 = 1
    const std::complex<double> norm = (x * std::sin(x) + std::cos(x)) * now - x * std::cos(x) * above / scale;
    for (std::complex<double>& value : j) value /= norm;
    return j;
}

void MoveWaves(const PackedTable& sources, std::int32_t lSize, const TranslationGeometry& geometry,
               std::int32_t order, TranslationScratch& scratch) {
    const auto n = static_cast<std::size_t>(lSize);
    const auto K = static_cast<std::size_t>(order);
    const std::size_t degrees = std::max(n, K);
    scratch.orders = std::min(n, K);
    scratch.movedStride = scratch.orders | 1U;  // odd: its rows do not fall on the same lines of a cache
    scratch.columnSize = n + K + 1;
    const auto reserve = [](auto& list, std::size_t size) {
        if (list.size() < size) list.resize(size);
    };
    reserve(scratch.alpha, degrees);
    reserve(scratch.beta, degrees);
    reserve(scratch.u, degrees);
    reserve(scratch.v, degrees);
    reserve(scratch.turned, n * n);
    reserve(scratch.moved, K * scratch.movedStride);
    reserve(scratch.sums, K);
    reserve(scratch.power, K);
    reserve(scratch.columns, (HWY_NAMESPACE::kColumns + 2) * scratch.columnSize);
    HWY_DYNAMIC_DISPATCH(Move)(sources, n, geometry, K, scratch);
}

void AddMoved(std::int32_t order, PackedTable& targets, TranslationScratch& scratch) {
    HWY_DYNAMIC_DISPATCH(TurnAllBack)(scratch.orders, static_cast<std::size_t>(order), targets, scratch);
}

void AddTranslated(const PackedTable& sources, std::int32_t lSize, const TranslationGeometry& geometry,
                   std::int32_t order, PackedTable& targets, TranslationScratch& scratch) {
    if (lSize <= 0 || order <= 0) return;
    MoveWaves(sources, lSize, geometry, order, scratch);
    AddMoved(order, targets, scratch);
}

}  // namespace qvre

#endif  // HWY_ONCE
