#include "scattering/SourceKernel.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/SourceKernel.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/VectorMath-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

/// Vectors of points that share the broadcast coefficients.
constexpr std::size_t kUnroll = 2;

/// One vector of points, in units of the distance from the source.
struct Points {
    V x, y, z;   // unit vector from the source
    V inverseX;  // 1 / (k rho)
    V hRe, hIm;  // h1 of the current l
    V hReBefore, hImBefore;
};

HWY_INLINE Points PointsAt(Tag d, const KernelSource& source, const KernelDirections& u, std::size_t i,
                           double radius) {
    const V r = hn::Set(d, radius);
    const V x = hn::MulSub(r, hn::LoadU(d, u.x + i), hn::Set(d, source.position[0]));
    const V y = hn::MulSub(r, hn::LoadU(d, u.y + i), hn::Set(d, source.position[1]));
    const V z = hn::MulSub(r, hn::LoadU(d, u.z + i), hn::Set(d, source.position[2]));
    const V rho = hn::Sqrt(hn::MulAdd(x, x, hn::MulAdd(y, y, hn::Mul(z, z))));
    const V inverse = hn::Div(hn::Set(d, 1.0), rho);
    Points p;
    p.x = hn::Mul(x, inverse);
    p.y = hn::Mul(y, inverse);
    p.z = hn::Mul(z, inverse);
    const V kr = hn::Mul(rho, hn::Set(d, source.k));
    p.inverseX = hn::Div(hn::Set(d, 1.0), kr);
    // h1_0 = exp(ix) / (ix); h1_(-1) = exp(ix) / x starts the recurrence.
    V sine;
    V cosine;
    SinCos(d, kr, sine, cosine);
    sine = hn::Mul(sine, p.inverseX);
    cosine = hn::Mul(cosine, p.inverseX);
    p.hRe = sine;
    p.hIm = hn::Neg(cosine);
    p.hReBefore = cosine;
    p.hImBefore = sine;
    return p;
}

/// For every m and each vector of points: p of the two degrees before, in turn, and (x + i y)^m. They stand
/// together, so that no load meets a store of another m at the same place of a page.
enum Slot : std::size_t { kEven, kOdd, kPowerRe, kPowerIm, kSlots };
constexpr std::size_t kStateSize = kLargestKernelL * kSlots * kUnroll * kSourceLanes;

/// One vector's place in the state of the first m; those of the next m follow at kSlots * kUnroll vectors.
HWY_INLINE void StartState(Tag d, const Points& p, std::size_t n, double* HWY_RESTRICT at) {
    const std::size_t block = kUnroll * hn::Lanes(d);
    V a = hn::Set(d, 1.0);
    V b = hn::Zero(d);
    for (std::size_t m = 0; m < n; ++m, at += kSlots * block) {
        hn::Store(hn::Zero(d), d, at + kEven * block);
        hn::Store(hn::Zero(d), d, at + kOdd * block);
        hn::Store(a, d, at + kPowerRe * block);
        hn::Store(b, d, at + kPowerIm * block);
        const V next = hn::MulSub(a, p.x, hn::Mul(b, p.y));
        b = hn::MulAdd(a, p.y, hn::Mul(b, p.x));
        a = next;
    }
}

/// The sum over m of one degree. Cosine and sine terms stand apart: two short chains of sums instead of a
/// long one.
struct DegreeSum {
    V gRe[kUnroll];
    V gIm[kUnroll];
    V fRe[kUnroll];
    V fIm[kUnroll];
};

/// `pair` and `gamma` are those of m = 0. Leaves p of the degree in the state.
HWY_INLINE DegreeSum SumOrders(Tag d, const Points* p, std::size_t l, const HarmonicPair* pair,
                               const double* gamma, double* HWY_RESTRICT state) {
    const std::size_t lanes = hn::Lanes(d);
    const std::size_t block = kUnroll * lanes;
    const std::size_t before = (l % 2 == 0 ? kOdd : kEven) * block;
    const std::size_t now = (l % 2 == 0 ? kEven : kOdd) * block;
    DegreeSum sum;
    // The order m = l, where p is 1, starts the sums.
    const HarmonicPair& top = pair[l];
    for (std::size_t v = 0; v < kUnroll; ++v) {
        double* const last = state + l * kSlots * block + v * lanes;
        hn::Store(hn::Set(d, 1.0), d, last + now);
        const V u0 = hn::Load(d, last + kPowerRe * block);
        const V v0 = hn::Load(d, last + kPowerIm * block);
        sum.gRe[v] = hn::Mul(u0, hn::Set(d, top.c.real()));
        sum.gIm[v] = hn::Mul(u0, hn::Set(d, top.c.imag()));
        sum.fRe[v] = hn::Mul(v0, hn::Set(d, top.d.real()));
        sum.fIm[v] = hn::Mul(v0, hn::Set(d, top.d.imag()));
    }
    for (std::size_t m = 0; m < l; ++m, ++pair, ++gamma, state += kSlots * block) {
        const V g = hn::Set(d, *gamma);
        const V cRe = hn::Set(d, pair->c.real());
        const V cIm = hn::Set(d, pair->c.imag());
        const V dRe = hn::Set(d, pair->d.real());
        const V dIm = hn::Set(d, pair->d.imag());
        for (std::size_t v = 0; v < kUnroll; ++v) {
            double* const here = state + v * lanes;
            const V q =
                hn::NegMulAdd(g, hn::Load(d, here + now), hn::Mul(p[v].z, hn::Load(d, here + before)));
            hn::Store(q, d, here + now);
            const V qu = hn::Mul(q, hn::Load(d, here + kPowerRe * block));
            const V qv = hn::Mul(q, hn::Load(d, here + kPowerIm * block));
            sum.gRe[v] = hn::MulAdd(qu, cRe, sum.gRe[v]);
            sum.gIm[v] = hn::MulAdd(qu, cIm, sum.gIm[v]);
            sum.fRe[v] = hn::MulAdd(qv, dRe, sum.fRe[v]);
            sum.fIm[v] = hn::MulAdd(qv, dIm, sum.fIm[v]);
        }
    }
    return sum;
}

/// h1 of the next degree.
HWY_INLINE void StepHankel(Tag d, std::size_t l, Points& p) {
    const V step = hn::Mul(hn::Set(d, 2.0 * static_cast<double>(l) + 1.0), p.inverseX);
    const V nextRe = hn::MulSub(step, p.hRe, p.hReBefore);
    const V nextIm = hn::MulSub(step, p.hIm, p.hImBefore);
    p.hReBefore = p.hRe;
    p.hImBefore = p.hIm;
    p.hRe = nextRe;
    p.hIm = nextIm;
}

void AddOutgoingWave(const KernelSource& source, const KernelDirections& u, double radius,
                     double* HWY_RESTRICT re, double* HWY_RESTRICT im) {
    const Tag d;
    const std::size_t lanes = hn::Lanes(d);
    const auto n = static_cast<std::size_t>(source.L);
    HWY_ALIGN double state[kStateSize];
    for (std::size_t first = 0; first < u.count; first += kUnroll * lanes) {
        Points p[kUnroll];
        V sumRe[kUnroll];
        V sumIm[kUnroll];
        for (std::size_t v = 0; v < kUnroll; ++v) {
            p[v] = PointsAt(d, source, u, first + v * lanes, radius);
            sumRe[v] = hn::Zero(d);
            sumIm[v] = hn::Zero(d);
            StartState(d, p[v], n, state + v * lanes);
        }
        const HarmonicPair* pair = source.pairs.data();
        const double* gamma = HarmonicGammas();
        for (std::size_t l = 0; l < n; pair += l + 1, gamma += l + 1, ++l) {
            const DegreeSum sum = SumOrders(d, p, l, pair, gamma, state);
            for (std::size_t v = 0; v < kUnroll; ++v) {
                const V gRe = hn::Add(sum.gRe[v], sum.fRe[v]);
                const V gIm = hn::Add(sum.gIm[v], sum.fIm[v]);
                sumRe[v] = hn::NegMulAdd(p[v].hIm, gIm, hn::MulAdd(p[v].hRe, gRe, sumRe[v]));
                sumIm[v] = hn::MulAdd(p[v].hIm, gRe, hn::MulAdd(p[v].hRe, gIm, sumIm[v]));
                StepHankel(d, l, p[v]);
            }
        }
        for (std::size_t v = 0; v < kUnroll; ++v) {
            const std::size_t i = first + v * lanes;
            hn::StoreU(hn::Add(hn::LoadU(d, re + i), sumRe[v]), d, re + i);
            hn::StoreU(hn::Add(hn::LoadU(d, im + i), sumIm[v]), d, im + i);
        }
    }
}

void AddPlaneWave(double amplitudeRe, double amplitudeIm, const double* q, const double* position,
                  const KernelDirections& u, double radius, double* HWY_RESTRICT re,
                  double* HWY_RESTRICT im) {
    const Tag d;
    const V aRe = hn::Set(d, amplitudeRe);
    const V aIm = hn::Set(d, amplitudeIm);
    const V offset = hn::Set(d, q[0] * position[0] + q[1] * position[1] + q[2] * position[2]);
    for (std::size_t i = 0; i < u.count; i += hn::Lanes(d)) {
        V phase = hn::MulSub(hn::Set(d, radius * q[0]), hn::LoadU(d, u.x + i), offset);
        phase = hn::MulAdd(hn::Set(d, radius * q[1]), hn::LoadU(d, u.y + i), phase);
        phase = hn::MulAdd(hn::Set(d, radius * q[2]), hn::LoadU(d, u.z + i), phase);
        V s;
        V c;
        SinCos(d, phase, s, c);
        hn::StoreU(hn::NegMulAdd(aIm, s, hn::MulAdd(aRe, c, hn::LoadU(d, re + i))), d, re + i);
        hn::StoreU(hn::MulAdd(aIm, c, hn::MulAdd(aRe, s, hn::LoadU(d, im + i))), d, im + i);
    }
}

void SumAzimuth(const double* re, const double* im, std::size_t count, const double* cosines,
                const double* sines, std::size_t stride, const AzimuthalSums& sums) {
    const Tag d;
    for (std::size_t m = 0; m < stride; m += hn::Lanes(d)) {
        V cosRe = hn::Zero(d);
        V cosIm = hn::Zero(d);
        V sinRe = hn::Zero(d);
        V sinIm = hn::Zero(d);
        for (std::size_t k = 0; k < count; ++k) {
            const V c = hn::LoadU(d, cosines + k * stride + m);
            const V s = hn::LoadU(d, sines + k * stride + m);
            const V a = hn::Set(d, re[k]);
            const V b = hn::Set(d, im[k]);
            cosRe = hn::MulAdd(a, c, cosRe);
            cosIm = hn::MulAdd(b, c, cosIm);
            sinRe = hn::MulAdd(a, s, sinRe);
            sinIm = hn::MulAdd(b, s, sinIm);
        }
        hn::StoreU(cosRe, d, sums.cosRe + m);
        hn::StoreU(cosIm, d, sums.cosIm + m);
        hn::StoreU(sinRe, d, sums.sinRe + m);
        hn::StoreU(sinIm, d, sums.sinIm + m);
    }
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace qvre {

HWY_EXPORT(AddOutgoingWave);
HWY_EXPORT(AddPlaneWave);
HWY_EXPORT(SumAzimuth);

double SmallestKernelX(std::int32_t L) {
    return std::max(1.0, 0.25 * L);
}

void AddOutgoingWave(const KernelSource& source, const KernelDirections& directions, double radius,
                     double* re, double* im) {
    HWY_DYNAMIC_DISPATCH(AddOutgoingWave)(source, directions, radius, re, im);
}

void AddPlaneWave(std::complex<double> amplitude, const double* q, const double* position,
                  const KernelDirections& directions, double radius, double* re, double* im) {
    HWY_DYNAMIC_DISPATCH(AddPlaneWave)
    (amplitude.real(), amplitude.imag(), q, position, directions, radius, re, im);
}

void SumAzimuth(const double* re, const double* im, std::size_t count, const double* cosines,
                const double* sines, std::size_t stride, const AzimuthalSums& sums) {
    HWY_DYNAMIC_DISPATCH(SumAzimuth)(re, im, count, cosines, sines, stride, sums);
}

}  // namespace qvre

#endif  // HWY_ONCE
