// Complex vectors of the kernels over packs; included once for every instruction set, inside
// foreach_target.h.

#if defined(QVRE_PACKVECTORS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QVRE_PACKVECTORS_INL_H
#undef QVRE_PACKVECTORS_INL_H
#else
#define QVRE_PACKVECTORS_INL_H
#endif

#include "scattering/PackedTable.h"
#include "scattering/VectorMath-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

static_assert(sizeof(PackedComplex) == 2 * kTranslationPack * sizeof(double));

struct VC {
    V re;
    V im;
};

/// A part of a pack: as many of its pairs as a vector holds.
struct Part {
    Tag d;
    std::size_t first;

    VC Load(const PackedComplex& z) const { return {hn::Load(d, z.re + first), hn::Load(d, z.im + first)}; }
    void Store(const VC& v, PackedComplex& z) const {
        hn::Store(v.re, d, z.re + first);
        hn::Store(v.im, d, z.im + first);
    }
    VC Zero() const { return {hn::Zero(d), hn::Zero(d)}; }
};

HWY_INLINE VC Add(VC a, VC b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}
HWY_INLINE VC Sub(VC a, VC b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}
HWY_INLINE VC Scale(VC a, V s) {
    return {hn::Mul(a.re, s), hn::Mul(a.im, s)};
}
HWY_INLINE VC Mul(VC a, VC b) {
    return {hn::NegMulAdd(a.im, b.im, hn::Mul(a.re, b.re)), hn::MulAdd(a.re, b.im, hn::Mul(a.im, b.re))};
}
HWY_INLINE VC MulConj(VC a, VC b) {  // a conj(b)
    return {hn::MulAdd(a.im, b.im, hn::Mul(a.re, b.re)), hn::NegMulAdd(a.re, b.im, hn::Mul(a.im, b.re))};
}
/// c s + a, s real.
HWY_INLINE VC MulAdd(VC c, V s, VC a) {
    return {hn::MulAdd(c.re, s, a.re), hn::MulAdd(c.im, s, a.im)};
}
HWY_INLINE VC MulAdd(VC a, VC b, VC c) {
    return {hn::NegMulAdd(a.im, b.im, hn::MulAdd(a.re, b.re, c.re)),
            hn::MulAdd(a.im, b.re, hn::MulAdd(a.re, b.im, c.im))};
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
