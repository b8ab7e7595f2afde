#include "multiple/PairKernel.h"

#include <algorithm>

#include "foundation/Text.h"
#include "scattering/TranslationTables.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "multiple/PairKernel.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/TranslationKernel-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {
namespace {

constexpr double kSamePlaceSquared = 1e-6;

/// The phases of the rotations and the radial functions of all pairs.
void FillGeometry(const Part& part, const Vec3& target, const SourceGroup& group, const PairSetting& setting,
                  PairScratch& w) {
    const Tag d = part.d;
    const V one = hn::Set(d, 1.0);
    const V zero = hn::Zero(d);
    const V x = hn::Sub(hn::Load(d, group.x + part.first), hn::Set(d, target[0]));
    const V y = hn::Sub(hn::Load(d, group.y + part.first), hn::Set(d, target[1]));
    V z = hn::Sub(hn::Load(d, group.z + part.first), hn::Set(d, target[2]));
    const V rhoSquared = hn::MulAdd(x, x, hn::Mul(y, y));
    V rSquared = hn::MulAdd(z, z, rhoSquared);
    const auto same = hn::Lt(rSquared, hn::Set(d, kSamePlaceSquared));
    z = hn::IfThenElse(same, one, z);
    rSquared = hn::IfThenElse(same, one, rSquared);
    const auto onAxis = hn::Or(same, hn::Eq(rhoSquared, zero));
    const V R = hn::Sqrt(rSquared);
    const V rho = hn::IfThenZeroElse(onAxis, hn::Sqrt(rhoSquared));
    const V overR = hn::Div(one, R);
    const V overRho = hn::Div(one, hn::IfThenElse(onAxis, one, rho));
    const VC alpha = {hn::IfThenZeroElse(onAxis, hn::Neg(hn::Mul(y, overRho))),
                      hn::IfThenElse(onAxis, one, hn::Mul(x, overRho))};
    const VC beta = {hn::Mul(z, overR), hn::Mul(rho, overR)};
    VC a = {one, zero};
    VC b = a;
    const std::size_t degrees = std::max(setting.sourceLSize, setting.targetLSize);
    for (std::size_t m = 0; m < degrees; ++m) {
        part.Store(a, w.alpha[m]);
        part.Store(m == 0 ? b : Scale(b, hn::Set(d, 2.0)), w.beta[m]);
        a = Mul(a, alpha);
        b = Mul(b, beta);
    }

    V sine;
    V cosine;
    SinCos(d, R, sine, cosine);
    V size = overR;
    if (setting.damping > 0.0) size = hn::Mul(size, hn::Exp(d, hn::Mul(R, hn::Set(d, -setting.damping))));
    size = hn::IfThenZeroElse(same, size);
    // g_0 = h_0 = -i exp(ix)/x, g_1 = i h_1 = (1 + i/x) h_0, g_(L+1) = i (2L+1)/x g_L + g_(L-1)
    VC before = {hn::Mul(sine, size), hn::Neg(hn::Mul(cosine, size))};
    VC now = Mul(before, VC{one, overR});
    part.Store(before, w.radial[0]);
    part.Store(now, w.radial[1]);
    const std::size_t orders = setting.sourceLSize + setting.targetLSize;
    for (std::size_t l = 1; l + 1 < orders; ++l) {
        const V factor = hn::Mul(overR, hn::Set(d, 2.0 * static_cast<double>(l) + 1.0));
        const VC next = {hn::NegMulAdd(factor, now.im, before.re), hn::MulAdd(factor, now.re, before.im)};
        part.Store(next, w.radial[l + 1]);
        before = now;
        now = next;
    }
    part.Store({zero, hn::Neg(overR)}, w.radial[orders]);  // -i/kR, for the powers of m
}

/// From l to l + 1 of the turned and the moved waves: odd, so that rows do not fall on the same lines of a
/// cache.
HWY_INLINE std::size_t Stride(const PairSetting& setting) {
    return std::min(setting.sourceLSize, setting.targetLSize) | 1U;
}

/// Turns the sources of all degrees so that the translation is along z.
void TurnToAxis(const Part& part, const PackedComplex* sources, const PairSetting& setting,
                std::vector<MirrorSums>& turned, PairScratch& w) {
    const std::size_t n = setting.sourceLSize;
    const std::size_t orders = std::min(n, setting.targetLSize);
    const std::size_t stride = Stride(setting);
    for (std::size_t l = 0; l < n; ++l) {
        TurnOnce(part, l, sources + l * (l + 1), w.alpha.data(), w.beta.data(), w.u.data(), w.v.data());
        Turn(part, l, l + 1, w.v.data(), [&](std::size_t m, VC e, VC o) HWY_ATTR {
            if (m >= orders) return;
            // w_m +- w_-m with w_m = (-1)^m (E - O), w_-m = (-1)^(l+m) (E + O). Of the signs, (-1)^l is that
            // of the sources, (-1)^m is left to the coaxial coefficients, and that of minus to MoveRows.
            const V weight = hn::Set(part.d, (*setting.weights)[m].weight[l - m]);
            const VC even = Scale(e, weight);
            const VC odd = Scale(o, weight);
            MirrorSums& out = turned[l * stride + m];
            part.Store(l % 2 == 0 ? even : odd, out.plus);
            part.Store(l % 2 == 0 ? odd : even, out.minus);
        });
    }
}

/// Row k of the column behind `now`, whose own row before and behind it are `lower` and `upper`.
HWY_INLINE VC NextElement(VC lower, VC upper, V square, VC before, V beforeSquare) {
    return MulAdd(before, beforeSquare, MulAdd(lower, square, upper));
}

/// Z^m_Ll for l = m .. below the smaller l size and L = l .. below the larger one, and what the recurrence
/// needs beyond. Two columns are made in one go, so that each is read from memory only once more.
void FillCoaxial(const Part& part, std::size_t m, VC power, const PairSetting& setting, PairScratch& w) {
    const CoaxialWeights& weights = (*setting.weights)[m];
    const double* const square = weights.square.data();
    const std::size_t columns = std::min(setting.sourceLSize, setting.targetLSize) - m;
    const std::size_t rows = std::max(setting.sourceLSize, setting.targetLSize) - m;
    const PackedComplex* const radial = w.radial.data() + m;
    std::size_t length = columns + rows - 1;
    PackedComplex* const z = w.coaxial.data();
    // u_m and u_-m make two of what stands alone at m = 0; the sign is that of the turned waves.
    const V factor = hn::Set(part.d, (m == 0 ? 1.0 : 2.0) * (m % 2 == 0 ? 1.0 : -1.0));
    const VC scaled = Scale(power, factor);
    for (std::size_t k = 0; k < length; ++k)
        part.Store(Scale(Mul(part.Load(radial[k]), scaled), hn::Set(part.d, weights.first[k])), z[k]);
    w.column[0] = 0;
    for (std::size_t i = 1; i < columns; ++i, length -= 2) w.column[i] = w.column[i - 1] + length;

    // Column i begins with row i. Before the first one stands nothing, which any numbers times 0 are.
    for (std::size_t i = 1; i < columns; i += 2) {
        const PackedComplex* HWY_RESTRICT const now = z + w.column[i - 1];
        const PackedComplex* HWY_RESTRICT const before = i > 1 ? z + w.column[i - 2] + 2 : now;
        PackedComplex* HWY_RESTRICT const next = z + w.column[i];
        const std::size_t nextLength = columns + rows - 1 - 2 * i;
        const V beforeSquare = hn::Set(part.d, i > 1 ? -square[i - 2] : 0.0);
        VC now0 = part.Load(now[0]);
        VC now1 = part.Load(now[1]);
        if (i + 1 == columns) {
            for (std::size_t k = 0; k < nextLength; ++k) {
                const VC now2 = part.Load(now[k + 2]);
                part.Store(NextElement(now0, now2, hn::Set(part.d, square[i + k - 1]), part.Load(before[k]),
                                       beforeSquare),
                           next[k]);
                now0 = now1;
                now1 = now2;
            }
            return;
        }
        PackedComplex* HWY_RESTRICT const second = z + w.column[i + 1];
        const V nowSquare = hn::Set(part.d, -square[i - 1]);
        VC next0 = part.Zero();
        VC next1 = part.Zero();
        V squareBefore = hn::Zero(part.d);
        V squareNow = hn::Set(part.d, square[i - 1]);
        for (std::size_t k = 0; k < nextLength; ++k) {
            const VC now2 = part.Load(now[k + 2]);
            const VC next2 = NextElement(now0, now2, squareNow, part.Load(before[k]), beforeSquare);
            part.Store(next2, next[k]);
            // Row i + k - 1 of the column behind, which begins with row i + 1.
            if (k >= 2) part.Store(NextElement(next0, next2, squareBefore, now0, nowSquare), second[k - 2]);
            next0 = next1;
            next1 = next2;
            now0 = now1;
            now1 = now2;
            squareBefore = squareNow;
            squareNow = hn::Set(part.d, square[i + k]);
        }
    }
}

constexpr std::size_t kRows = 4;  // of Z, that are applied at once

/// The sums of one row of Z times the turned sources.
struct RowSums {
    VC plus;
    VC minus;
};

HWY_INLINE void AddElement(const Part& part, const PackedComplex& z, VC plus, VC minus, RowSums& sums) {
    const VC s = part.Load(z);
    sums.plus = MulAdd(s, plus, sums.plus);
    sums.minus = MulAdd(s, minus, sums.minus);
}

/// Rows first .. first + kCount - 1 of Z times the turned sources of order m. The sums have a name each, as
/// the compiler keeps an array of them in memory.
template <std::size_t kCount>
HWY_INLINE void MoveRows(const Part& part, std::size_t m, std::size_t first, const PairSetting& setting,
                         const PairScratch& w, const MirrorSums* HWY_RESTRICT a,
                         MirrorSums* HWY_RESTRICT moved) {
    const std::size_t stride = Stride(setting);
    const std::size_t sources = setting.sourceLSize - m;
    const PackedComplex* const z = w.coaxial.data();
    RowSums sum0 = {part.Zero(), part.Zero()};
    RowSums sum1 = sum0;
    RowSums sum2 = sum0;
    RowSums sum3 = sum0;
    const auto add = [&](std::size_t i, const auto& element) HWY_ATTR {
        const VC plus = part.Load(a[i * stride].plus);
        const VC minus = part.Load(a[i * stride].minus);
        AddElement(part, element(0), plus, minus, sum0);
        if constexpr (kCount > 1) AddElement(part, element(1), plus, minus, sum1);
        if constexpr (kCount > 2) AddElement(part, element(2), plus, minus, sum2);
        if constexpr (kCount > 3) AddElement(part, element(3), plus, minus, sum3);
    };
    std::size_t i = 0;
    for (const std::size_t end = std::min(first, sources); i < end; ++i) {
        const PackedComplex* const column = z + w.column[i] + (first - i);
        add(i, [column](std::size_t r) -> const PackedComplex& { return column[r]; });
    }
    for (const std::size_t end = std::min(first + kCount, sources); i < end; ++i) {
        add(i, [&](std::size_t r) -> const PackedComplex& {
            const std::size_t low = std::min(i, first + r);
            return z[w.column[low] + (std::max(i, first + r) - low)];
        });
    }
    if (i < sources) {
        // Row first + r is column first + r, of which it has the elements behind the diagonal.
        const auto row = [&](std::size_t r) {
            return z + w.column[first + (r < kCount ? r : 0)] - first - r;
        };
        const PackedComplex* const rows[kRows] = {row(0), row(1), row(2), row(3)};
        for (; i < sources; ++i) add(i, [&](std::size_t r) -> const PackedComplex& { return rows[r][i]; });
    }
    const double* const weight = (*setting.weights)[m].weight.data() + first;
    const auto store = [&](std::size_t r, const RowSums& sums) HWY_ATTR {
        MirrorSums& out = moved[(m + first + r) * stride + m];
        const V factor = hn::Set(part.d, weight[r]);
        part.Store(Scale(sums.plus, factor), out.plus);
        part.Store(Scale(sums.minus, hn::Neg(factor)), out.minus);
    };
    store(0, sum0);
    if constexpr (kCount > 1) store(1, sum1);
    if constexpr (kCount > 2) store(2, sum2);
    if constexpr (kCount > 3) store(3, sum3);
}

/// Translates the turned sources of order m along z.
void MoveOrder(const Part& part, std::size_t m, const PairSetting& setting, const PairScratch& w,
               const MirrorSums* a, MirrorSums* moved) {
    const std::size_t rows = setting.targetLSize - m;
    std::size_t first = 0;
    for (; first + kRows <= rows; first += kRows) MoveRows<kRows>(part, m, first, setting, w, a, moved);
    switch (rows - first) {
        case 3:
            MoveRows<3>(part, m, first, setting, w, a, moved);
            break;
        case 2:
            MoveRows<2>(part, m, first, setting, w, a, moved);
            break;
        case 1:
            MoveRows<1>(part, m, first, setting, w, a, moved);
            break;
        default:
            break;
    }
}

/// Turns the translated waves back and adds them to the target.
void TurnFromAxis(const Part& part, const PairSetting& setting, const MirrorSums* moved,
                  PackedComplex* targets, PairScratch& w) {
    const std::size_t orders = std::min(setting.sourceLSize, setting.targetLSize);
    for (std::size_t l = 0; l < setting.targetLSize; ++l) {
        AddTurnedBack(part, l, std::min(orders, l + 1), moved + l * Stride(setting), w.alpha.data(),
                      w.beta.data(), w.v.data(), targets + l * (l + 1));
    }
}

void AddWaves(const Vec3& target, const SourceGroup& group, const PairSetting& setting,
              std::span<const PairWave> waves, PairScratch& w) {
    const Tag d;
    const std::size_t orders = std::min(setting.sourceLSize, setting.targetLSize);
    for (std::size_t lane = 0; lane < kTranslationPack; lane += hn::Lanes(d)) {
        const Part part = {d, lane};
        FillGeometry(part, target, group, setting, w);
        for (std::size_t i = 0; i < waves.size(); ++i)
            TurnToAxis(part, waves[i].sources, setting, w.turned[i], w);
        VC power = {hn::Set(d, 1.0), hn::Zero(d)};
        for (std::size_t m = 0; m < orders; ++m) {
            FillCoaxial(part, m, power, setting, w);
            power = Mul(power, part.Load(w.radial[setting.sourceLSize + setting.targetLSize]));
            for (std::size_t i = 0; i < waves.size(); ++i)
                MoveOrder(part, m, setting, w, w.turned[i].data() + m * Stride(setting) + m,
                          w.moved[i].data());
        }
        for (std::size_t i = 0; i < waves.size(); ++i)
            TurnFromAxis(part, setting, w.moved[i].data(), waves[i].targets, w);
    }
}

void AddUpLanes(const PackedComplex* targets, std::size_t lSize, std::complex<double>* c) {
    const Tag d;
    for (std::size_t i = 0; i < lSize * lSize; ++i) {
        VC sum = {hn::Zero(d), hn::Zero(d)};
        for (std::size_t lane = 0; lane < kTranslationPack; lane += hn::Lanes(d))
            sum = Add(sum, Part{d, lane}.Load(targets[i]));
        c[i] = {hn::GetLane(hn::SumOfLanes(d, sum.re)), hn::GetLane(hn::SumOfLanes(d, sum.im))};
    }
}

}  // namespace
}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace qvre {

HWY_EXPORT(AddWaves);
HWY_EXPORT(AddUpLanes);

std::vector<CoaxialWeights> MakeCoaxialWeights(std::int32_t largestLSize) {
    std::vector<CoaxialWeights> all;
    for (std::int32_t m = 0; m < largestLSize; ++m) {
        const CoaxialTable& table = CoaxialTableOf(m);
        CoaxialWeights weights;
        double w = 1.0;
        for (std::size_t i = 0; i < 2 * static_cast<std::size_t>(largestLSize - m); ++i) {
            weights.square.push_back(table.a[i] * table.a[i]);
            weights.weight.push_back(w);
            weights.first.push_back(table.first[i] / w);
            w /= table.a[i];
        }
        all.push_back(std::move(weights));
    }
    return all;
}

PairScratch::PairScratch(std::size_t largestLSize, std::size_t waves)
    : alpha(largestLSize),
      beta(largestLSize),
      radial(2 * largestLSize + 2),
      coaxial(largestLSize * largestLSize),
      column(largestLSize),
      u(largestLSize),
      v(largestLSize) {
    for (std::size_t i = 0; i < std::min(waves, kWavesTogether); ++i) {
        turned[i].resize(largestLSize * (largestLSize | 1U));
        moved[i].resize(largestLSize * (largestLSize | 1U));
    }
}

void AddWavesAt(const Vec3& target, const SourceGroup& group, const PairSetting& setting,
                std::span<const PairWave> waves, PairScratch& scratch) {
    if (setting.sourceLSize == 0 || setting.targetLSize == 0) return;
    for (std::size_t first = 0; first < waves.size(); first += PairScratch::kWavesTogether) {
        const auto together =
            waves.subspan(first, std::min(PairScratch::kWavesTogether, waves.size() - first));
        HWY_DYNAMIC_DISPATCH(AddWaves)(target, group, setting, together, scratch);
    }
}

void SumLanes(const PackedComplex* targets, std::size_t lSize, std::complex<double>* c) {
    HWY_DYNAMIC_DISPATCH(AddUpLanes)(targets, lSize, c);
    for (std::size_t l = 0; l < lSize; ++l) {
        const std::complex<double> power = IPower(static_cast<int>(l));
        for (std::size_t i = l * l; i < (l + 1) * (l + 1); ++i) c[i] *= power;
    }
}

}  // namespace qvre

#endif  // HWY_ONCE
