#include "scattering/FarFieldKernel.h"

#include <algorithm>
#include <cmath>

#include "foundation/Text.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/FarFieldKernel.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include <hwy/contrib/math/math-inl.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace zf::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using FarTag = hn::CappedTag<double, 8>;
using FarVector = hn::Vec<FarTag>;

constexpr std::size_t kSources = ZfFarField::kTileSources;

/// Vectors of directions in the inner product: as many as the registers hold with the sums of a tile.
constexpr std::size_t kVectors = HWY_TARGET <= HWY_AVX3 ? 2 : 1;

/// The real functions p_lm u_m and p_lm v_m of each direction, at [function * kBlock + direction].
void FarHarmonics(std::size_t n, const KernelDirections& u, double* HWY_RESTRICT basis) {
    const FarTag d;
    const std::size_t lanes = hn::Lanes(d);
    HWY_ALIGN double state[2][kLargestKernelL * 8];
    HWY_ALIGN double powerRe[kLargestKernelL * 8];
    HWY_ALIGN double powerIm[kLargestKernelL * 8];
    for (std::size_t i = 0; i < u.count; i += lanes) {
        const FarVector x = hn::LoadU(d, u.x + i);
        const FarVector y = hn::LoadU(d, u.y + i);
        const FarVector z = hn::LoadU(d, u.z + i);
        FarVector a = hn::Set(d, 1.0);
        FarVector b = hn::Zero(d);
        for (std::size_t m = 0; m < n; ++m) {
            hn::Store(hn::Zero(d), d, state[0] + m * lanes);
            hn::Store(hn::Zero(d), d, state[1] + m * lanes);
            hn::Store(a, d, powerRe + m * lanes);
            hn::Store(b, d, powerIm + m * lanes);
            const FarVector next = hn::MulSub(a, x, hn::Mul(b, y));
            b = hn::MulAdd(a, y, hn::Mul(b, x));
            a = next;
        }
        const double* gamma = HarmonicGammas();
        double* out = basis + i;
        for (std::size_t l = 0; l < n; ++l) {
            const double* before = state[l & 1];
            double* now = state[(l & 1) ^ 1];
            for (std::size_t m = 0; m <= l; ++m, ++gamma) {
                const FarVector q = m == l ? hn::Set(d, 1.0)
                                           : hn::NegMulAdd(hn::Set(d, *gamma), hn::Load(d, now + m * lanes),
                                                           hn::Mul(z, hn::Load(d, before + m * lanes)));
                hn::Store(q, d, now + m * lanes);
                hn::StoreU(hn::Mul(q, hn::Load(d, powerRe + m * lanes)), d, out);
                out += ZfFarField::kBlock;
                if (m == 0) continue;
                hn::StoreU(hn::Mul(q, hn::Load(d, powerIm + m * lanes)), d, out);
                out += ZfFarField::kBlock;
            }
        }
    }
}

/// Adds S exp(-i kd) exp(damping + slope kd).
HWY_INLINE void AddSource(FarTag d, const ZfFarField::Geometry& g, const KernelDirections& u, std::size_t i,
                          FarVector sRe, FarVector sIm, FarVector& re, FarVector& im) {
    FarVector kd = hn::Mul(hn::Set(d, g.kx), hn::LoadU(d, u.x + i));
    kd = hn::MulAdd(hn::Set(d, g.ky), hn::LoadU(d, u.y + i), kd);
    kd = hn::MulAdd(hn::Set(d, g.kz), hn::LoadU(d, u.z + i), kd);
    FarVector c = hn::Cos(d, kd);
    FarVector s = hn::Sin(d, kd);
    if (g.damping != 0.0) {
        const FarVector damping = hn::Exp(d, hn::MulAdd(hn::Set(d, g.slope), kd, hn::Set(d, g.damping)));
        c = hn::Mul(c, damping);
        s = hn::Mul(s, damping);
    }
    re = hn::Add(re, hn::MulAdd(sRe, c, hn::Mul(sIm, s)));
    im = hn::Add(im, hn::MulSub(sIm, c, hn::Mul(sRe, s)));
}

void FarAmplitudes(std::size_t functions, const ZfFarField::Sources& sources,
                   const double* HWY_RESTRICT basis, const KernelDirections& u, double* HWY_RESTRICT re,
                   double* HWY_RESTRICT im) {
    const FarTag d;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t i = 0; i < u.count; i += lanes) {
        hn::StoreU(hn::Zero(d), d, re + i);
        hn::StoreU(hn::Zero(d), d, im + i);
    }
    for (std::size_t first = 0; first < sources.geometry.size(); first += kSources) {
        const double* const tile = sources.coefficients.data() + first * functions * 2;
        const std::size_t present = std::min(kSources, sources.geometry.size() - first);
        for (std::size_t i = 0; i < u.count; i += kVectors * lanes) {
            FarVector sRe[kSources][kVectors];
            FarVector sIm[kSources][kVectors];
            for (std::size_t s = 0; s < kSources; ++s) {
                for (std::size_t v = 0; v < kVectors; ++v) {
                    sRe[s][v] = hn::Zero(d);
                    sIm[s][v] = hn::Zero(d);
                }
            }
            const double* HWY_RESTRICT coefficient = tile;
            const double* HWY_RESTRICT harmonic = basis + i;
            for (std::size_t j = 0; j < functions; ++j) {
                FarVector h[kVectors];
                for (std::size_t v = 0; v < kVectors; ++v) h[v] = hn::LoadU(d, harmonic + v * lanes);
                for (std::size_t s = 0; s < kSources; ++s) {
                    const FarVector cRe = hn::Set(d, coefficient[2 * s]);
                    const FarVector cIm = hn::Set(d, coefficient[2 * s + 1]);
                    for (std::size_t v = 0; v < kVectors; ++v) {
                        sRe[s][v] = hn::MulAdd(cRe, h[v], sRe[s][v]);
                        sIm[s][v] = hn::MulAdd(cIm, h[v], sIm[s][v]);
                    }
                }
                coefficient += 2 * kSources;
                harmonic += ZfFarField::kBlock;
            }
            for (std::size_t v = 0; v < kVectors; ++v) {
                const std::size_t at = i + v * lanes;
                FarVector sumRe = hn::LoadU(d, re + at);
                FarVector sumIm = hn::LoadU(d, im + at);
                for (std::size_t s = 0; s < present; ++s)
                    AddSource(d, sources.geometry[first + s], u, at, sRe[s][v], sIm[s][v], sumRe, sumIm);
                hn::StoreU(sumRe, d, re + at);
                hn::StoreU(sumIm, d, im + at);
            }
        }
    }
}

}  // namespace zf::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace zf {
HWY_EXPORT(FarHarmonics);
HWY_EXPORT(FarAmplitudes);
}  // namespace zf

bool ZfFarField::Serves(const ZfVectorFreeElectron& list) {
    if (list.electrons.empty() || list.LargestL() > kLargestKernelL) return false;
    const double k = list.electrons.front().k;
    return std::all_of(list.electrons.begin(), list.electrons.end(), [k](const ZfFreeElectron& electron) {
        return k * std::sqrt(NormSquared(electron.position)) <= kLargestKernelPhase;
    });
}

ZfFarField::ZfFarField(const ZfVectorFreeElectron& list) : L_(list.LargestL()) {
    const ZfFreeElectron& emitter = list.electrons.front();
    const double f = list.meanFreePath > 0.0 ? 2.0 / list.meanFreePath : 0.0;
    Append(direct_, emitter, emitter, 1.0);
    for (std::size_t e = 1; e < list.electrons.size(); ++e) {
        const double rho = std::sqrt(NormSquared(list.electrons[e].position));
        Append(scattered_, list.electrons[e], emitter, std::exp(-rho * f));
    }
}

void ZfFarField::Append(Sources& sources, const ZfFreeElectron& electron, const ZfFreeElectron& emitter,
                        double factor) const {
    const auto functions = static_cast<std::size_t>(L_) * static_cast<std::size_t>(L_);
    const std::size_t inTile = sources.geometry.size() % kTileSources;
    if (inTile == 0)
        sources.coefficients.resize(sources.coefficients.size() + functions * kTileSources * 2, 0.0);
    double* out =
        sources.coefficients.data() + (sources.geometry.size() - inTile) * functions * 2 + 2 * inTile;
    const auto put = [&out](std::complex<double> value) {
        out[0] = value.real();
        out[1] = value.imag();
        out += 2 * kTileSources;
    };
    const std::vector<HarmonicPair> pairs = HarmonicPairs(electron.A);
    std::size_t i = 0;
    for (std::int32_t l = 0; l < electron.A.L; ++l) {
        const std::complex<double> power = factor * IPower(l + 1);
        for (std::int32_t m = 0; m <= l; ++m, ++i) {
            put(power * pairs[i].c);
            if (m > 0) put(power * pairs[i].d);
        }
    }

    const double k = emitter.k;
    const double* p = electron.position.Data();
    const double rho = std::sqrt(NormSquared(electron.position));
    const double u = electron.Uiso + emitter.Uiso;
    Geometry geometry = {k * p[0], k * p[1], k * p[2], 0.0, 0.0};
    if (u > 0.0 && rho > 0.0) {
        geometry.damping = -k * k * u;
        geometry.slope = k * u / rho;
    }
    sources.geometry.push_back(geometry);
}

void ZfFarField::Calculate(const KernelDirections& directions, std::vector<double>& scratch,
                           const Amplitudes& result) const {
    using namespace zf;
    const auto functions = static_cast<std::size_t>(L_) * static_cast<std::size_t>(L_);
    scratch.resize(functions * kBlock + kKernelPadding);
    HWY_DYNAMIC_DISPATCH(FarHarmonics)(static_cast<std::size_t>(L_), directions, scratch.data());
    HWY_DYNAMIC_DISPATCH(FarAmplitudes)
    (functions, direct_, scratch.data(), directions, result.directRe, result.directIm);
    HWY_DYNAMIC_DISPATCH(FarAmplitudes)
    (functions, scattered_, scratch.data(), directions, result.scatteredRe, result.scatteredIm);
}

#endif  // HWY_ONCE
