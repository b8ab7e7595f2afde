// Vector functions of the kernels; included once for every instruction set, inside foreach_target.h.

#if defined(QVRE_VECTORMATH_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QVRE_VECTORMATH_INL_H
#undef QVRE_VECTORMATH_INL_H
#else
#define QVRE_VECTORMATH_INL_H
#endif

#include <hwy/contrib/math/math-inl.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<double, 8>;
using V = hn::Vec<Tag>;

/// Sine and cosine at once, for |x| up to kLargestKernelPhase. With fused multiply-adds the error is 1.3e-16;
/// without, the argument loses another 1.1e-16 of itself. The argument is reduced to a quarter turn with pi/2
/// in two parts (W. J. Cody, W. Waite, Software Manual for the Elementary Functions,
/// Prentice-Hall 1980); the polynomials are the Taylor series, to the order that double precision needs on
/// (-pi/4, pi/4).
HWY_INLINE void SinCos(Tag d, V x, V& sine, V& cosine) {
    const V turns = hn::Round(hn::Mul(x, hn::Set(d, 0.63661977236758134)));
    V r = hn::NegMulAdd(turns, hn::Set(d, 1.5707963267948966), x);
    r = hn::NegMulAdd(turns, hn::Set(d, 6.123233995736766e-17), r);
    const V r2 = hn::Mul(r, r);

    V s = hn::Set(d, 1.0 / 355687428096000.0);
    s = hn::MulAdd(s, r2, hn::Set(d, -1.0 / 1307674368000.0));
    s = hn::MulAdd(s, r2, hn::Set(d, 1.0 / 6227020800.0));
    s = hn::MulAdd(s, r2, hn::Set(d, -1.0 / 39916800.0));
    s = hn::MulAdd(s, r2, hn::Set(d, 1.0 / 362880.0));
    s = hn::MulAdd(s, r2, hn::Set(d, -1.0 / 5040.0));
    s = hn::MulAdd(s, r2, hn::Set(d, 1.0 / 120.0));
    s = hn::MulAdd(s, r2, hn::Set(d, -1.0 / 6.0));
    s = hn::MulAdd(hn::Mul(s, r2), r, r);

    V c = hn::Set(d, 1.0 / 20922789888000.0);
    c = hn::MulAdd(c, r2, hn::Set(d, -1.0 / 87178291200.0));
    c = hn::MulAdd(c, r2, hn::Set(d, 1.0 / 479001600.0));
    c = hn::MulAdd(c, r2, hn::Set(d, -1.0 / 3628800.0));
    c = hn::MulAdd(c, r2, hn::Set(d, 1.0 / 40320.0));
    c = hn::MulAdd(c, r2, hn::Set(d, -1.0 / 720.0));
    c = hn::MulAdd(c, r2, hn::Set(d, 1.0 / 24.0));
    c = hn::MulAdd(c, r2, hn::Set(d, -0.5));
    c = hn::MulAdd(c, r2, hn::Set(d, 1.0));

    // Odd quarters exchange the two; the sign of the sine turns at 2 and 3, that of the cosine at 1 and 2.
    const hn::RebindToSigned<Tag> di;
    const auto quarter = hn::ConvertTo(di, turns);
    const auto odd = hn::MaskFromVec(hn::BitCast(d, hn::Neg(hn::And(quarter, hn::Set(di, 1)))));
    const V sineSign = hn::BitCast(d, hn::ShiftLeft<62>(hn::And(quarter, hn::Set(di, 2))));
    const V cosineSign =
        hn::BitCast(d, hn::ShiftLeft<62>(hn::And(hn::Add(quarter, hn::Set(di, 1)), hn::Set(di, 2))));
    sine = hn::Xor(hn::IfThenElse(odd, c, s), sineSign);
    cosine = hn::Xor(hn::IfThenElse(odd, s, c), cosineSign);
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
