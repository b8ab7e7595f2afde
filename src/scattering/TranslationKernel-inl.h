// Rotations by quarter turns, for the kernels that translate waves; included once for every instruction set,
// inside foreach_target.h.

#if defined(QVRE_TRANSLATIONKERNEL_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QVRE_TRANSLATIONKERNEL_INL_H
#undef QVRE_TRANSLATIONKERNEL_INL_H
#else
#define QVRE_TRANSLATIONKERNEL_INL_H
#endif

#include "scattering/PackVectors-inl.h"
#include "scattering/TranslationTables.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

/// The first kRows rows of a tile of d(pi/2) times u: calls use(mu, E, O) for each, two rows lying between
/// one and the next. The sums over even and odd m run side by side, so that additions need not wait. They
/// have a name each, as the compiler keeps an array of them in memory.
template <std::size_t kRows, class Use>
HWY_INLINE void TurnRows(const Part& part, std::size_t l, std::size_t first, std::size_t count,
                         const double* HWY_RESTRICT table, const PackedComplex* HWY_RESTRICT u,
                         const Use& use) {
    const Tag d = part.d;
    VC even0 = part.Zero();
    VC even1 = even0;
    VC even2 = even0;
    VC even3 = even0;
    VC odd0 = even0;
    VC odd1 = even0;
    VC odd2 = even0;
    VC odd3 = even0;
    const double* HWY_RESTRICT even = table;
    const double* HWY_RESTRICT odd = table + (l + 2) / 2 * kTurnTile;
    for (std::size_t pairs = count / 2; pairs > 0; --pairs) {
        const VC a = part.Load(u[0]);
        const VC b = part.Load(u[2]);  // plus and minus of one m stand together
        even0 = MulAdd(a, hn::Set(d, even[0]), even0);
        odd0 = MulAdd(b, hn::Set(d, odd[0]), odd0);
        if constexpr (kRows > 1) {
            even1 = MulAdd(a, hn::Set(d, even[1]), even1);
            odd1 = MulAdd(b, hn::Set(d, odd[1]), odd1);
        }
        if constexpr (kRows > 2) {
            even2 = MulAdd(a, hn::Set(d, even[2]), even2);
            odd2 = MulAdd(b, hn::Set(d, odd[2]), odd2);
        }
        if constexpr (kRows > 3) {
            even3 = MulAdd(a, hn::Set(d, even[3]), even3);
            odd3 = MulAdd(b, hn::Set(d, odd[3]), odd3);
        }
        u += 4;
        even += kTurnTile;
        odd += kTurnTile;
    }
    if (count % 2 == 1) {
        const VC a = part.Load(u[0]);
        even0 = MulAdd(a, hn::Set(d, even[0]), even0);
        if constexpr (kRows > 1) even1 = MulAdd(a, hn::Set(d, even[1]), even1);
        if constexpr (kRows > 2) even2 = MulAdd(a, hn::Set(d, even[2]), even2);
        if constexpr (kRows > 3) even3 = MulAdd(a, hn::Set(d, even[3]), even3);
    }
    use(first, even0, odd0);
    if constexpr (kRows > 1) use(first + 2, even1, odd1);
    if constexpr (kRows > 2) use(first + 4, even2, odd2);
    if constexpr (kRows > 3) use(first + 6, even3, odd3);
}

/// Multiplies with d(pi/2): calls use(mu, E, O) for mu = 0 .. l, with E and O the sums of D_mum over the even
/// and the odd m >= 0 below `count`. The element at mu is E + O, that at -mu (-1)^l (E - O); the transposed
/// matrix has (-1)^mu (E - O) and (-1)^(l+mu) (E + O).
template <class Use>
HWY_INLINE void Turn(const Part& part, std::size_t l, std::size_t count, const MirrorSums* HWY_RESTRICT u,
                     const Use& use) {
    static_assert(kTurnTile == 4 && sizeof(MirrorSums) == 2 * sizeof(PackedComplex));
    const double* table = QuarterTurn(static_cast<std::int32_t>(l));
    for (std::size_t sign = 0; sign < 2; ++sign) {
        const PackedComplex* const values = sign == 0 ? &u->plus : &u->minus;
        std::size_t first = (l + sign) % 2;
        for (; first + 6 <= l; first += 2 * kTurnTile, table += (l + 1) * kTurnTile)
            TurnRows<4>(part, l, first, count, table, values, use);
        if (first > l) continue;
        if (first + 4 <= l)
            TurnRows<3>(part, l, first, count, table, values, use);
        else if (first + 2 <= l)
            TurnRows<2>(part, l, first, count, table, values, use);
        else
            TurnRows<1>(part, l, first, count, table, values, use);
        table += (l + 1) * kTurnTile;
    }
}

/// From the elements at mu and -mu, times e^(i mu beta) and e^(-i mu beta), to their sums, or with the
/// conjugate phases. `phase` is 2 e^(i mu beta), and 1 at mu = 0.
template <bool kConjugate>
HWY_INLINE void StorePhased(const Part& part, std::size_t l, VC e, VC o, VC phase, MirrorSums& out) {
    const V sine = kConjugate ? hn::Neg(phase.im) : phase.im;
    // plus = E cos + i O sin and minus = O cos + i E sin for even l
    const VC a = {hn::NegMulAdd(o.im, sine, hn::Mul(e.re, phase.re)),
                  hn::MulAdd(o.re, sine, hn::Mul(e.im, phase.re))};
    const VC b = {hn::NegMulAdd(e.im, sine, hn::Mul(o.re, phase.re)),
                  hn::MulAdd(e.re, sine, hn::Mul(o.im, phase.re))};
    part.Store(l % 2 == 0 ? a : b, out.plus);
    part.Store(l % 2 == 0 ? b : a, out.minus);
}

/// The first half of a rotation: mirror sums `u` of the elements a[-l] .. a[l] of one degree, each times
/// e^(i m alpha'), and `v`, what a quarter turn and the phases of beta make of them.
HWY_INLINE void TurnOnce(const Part& part, std::size_t l, const PackedComplex* a, const PackedComplex* alpha,
                         const PackedComplex* beta, MirrorSums* HWY_RESTRICT u, MirrorSums* HWY_RESTRICT v) {
    for (std::size_t m = 0; m <= l; ++m) {
        const VC phase = part.Load(alpha[m]);
        const VC plus = Mul(part.Load(a[m]), phase);
        const VC minus = m == 0 ? part.Zero() : MulConj(part.Load(*(a - m)), phase);
        part.Store(Add(plus, minus), u[m].plus);
        part.Store(Sub(plus, minus), u[m].minus);
    }
    Turn(part, l, l + 1, u, [&](std::size_t mu, VC e, VC o) HWY_ATTR {
        StorePhased<true>(part, l, e, o, part.Load(beta[mu]), v[mu]);
    });
}

/// The way back: turns `moved`, the mirror sums of one degree around the target for m < count, and adds its
/// elements to c[-l] .. c[l]. `v` is scratch.
HWY_INLINE void AddTurnedBack(const Part& part, std::size_t l, std::size_t count,
                              const MirrorSums* HWY_RESTRICT moved, const PackedComplex* alpha,
                              const PackedComplex* beta, MirrorSums* HWY_RESTRICT v, PackedComplex* c) {
    Turn(part, l, count, moved, [&](std::size_t mu, VC e, VC o) HWY_ATTR {
        StorePhased<false>(part, l, e, o, part.Load(beta[mu]), v[mu]);
    });
    Turn(part, l, l + 1, v, [&](std::size_t m, VC e, VC o) HWY_ATTR {
        const VC phase = part.Load(alpha[m]);
        const VC plus = MulConj(Sub(e, o), phase);
        const VC at = part.Load(c[m]);
        part.Store(m % 2 == 0 ? Add(at, plus) : Sub(at, plus), c[m]);
        if (m == 0) return;
        const VC minus = Mul(Add(e, o), phase);
        PackedComplex& mirror = *(c - m);
        const VC atMirror = part.Load(mirror);
        part.Store((l + m) % 2 == 0 ? Add(atMirror, minus) : Sub(atMirror, minus), mirror);
    });
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
