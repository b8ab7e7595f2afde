#include "scattering/FarFieldKernel.h"

#include <algorithm>
#include <cmath>
#include <span>

#include "foundation/Text.h"
#include "scattering/SourceKernel.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/FarFieldKernel.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/VectorMath-inl.h"

HWY_BEFORE_NAMESPACE();
namespace zf::HWY_NAMESPACE {

constexpr std::size_t kPack = ZfFarField::kPack;
constexpr std::size_t kValues = 4;    // Re C, Im C, Re D, Im D
constexpr std::size_t kGeometry = 5;  // kx, ky, kz, damping, slope
constexpr std::size_t kRings = 4;     // rings that share the loads of a coefficient

/// Sums over l for up to kRings rings and one m: G = sum of C p, H = sum of D p. Returns the coefficients
/// behind.
HWY_INLINE const double* SumOverDegrees(Tag d, std::size_t degrees, const double* HWY_RESTRICT coefficient,
                                        const double* const* theta, double* HWY_RESTRICT out,
                                        std::size_t outStride) {
    V sum[kRings][kValues];
    for (auto& ring : sum)
        for (V& value : ring) value = hn::Zero(d);
    for (std::size_t i = 0; i < degrees; ++i) {
        V c[kValues];
        for (std::size_t v = 0; v < kValues; ++v) c[v] = hn::LoadU(d, coefficient + v * kPack);
        for (std::size_t r = 0; r < kRings; ++r) {
            const V p = hn::Set(d, theta[r][i]);
            for (std::size_t v = 0; v < kValues; ++v) sum[r][v] = hn::MulAdd(c[v], p, sum[r][v]);
        }
        coefficient += kValues * kPack;
    }
    for (std::size_t r = 0; r < kRings; ++r)
        for (std::size_t v = 0; v < kValues; ++v) hn::StoreU(sum[r][v], d, out + r * outStride + v * kPack);
    return coefficient;
}

/// Adds the waves of a pack in kCount directions to their sums, kPack real parts and kPack imaginary parts
/// each. The directions share the loads of the orders.
template <bool kDamped, std::size_t kCount>
HWY_INLINE void AddDirections(Tag d, std::size_t n, const double* HWY_RESTRICT orders,
                              const double* HWY_RESTRICT powers, const double* HWY_RESTRICT geometry,
                              const ZfFarFieldDirections::Direction* u, double* HWY_RESTRICT sums) {
    V re[kCount];
    V im[kCount];
    for (std::size_t i = 0; i < kCount; ++i) {
        re[i] = hn::Zero(d);
        im[i] = hn::Zero(d);
    }
    for (std::size_t m = 0; m < n; ++m, orders += kValues * kPack, powers += 2) {
        const V gRe = hn::LoadU(d, orders);
        const V gIm = hn::LoadU(d, orders + kPack);
        const V hRe = hn::LoadU(d, orders + 2 * kPack);
        const V hIm = hn::LoadU(d, orders + 3 * kPack);
        for (std::size_t i = 0; i < kCount; ++i) {
            const V a = hn::Set(d, powers[i * 2 * n]);
            const V b = hn::Set(d, powers[i * 2 * n + 1]);
            re[i] = hn::MulAdd(b, hRe, hn::MulAdd(a, gRe, re[i]));
            im[i] = hn::MulAdd(b, hIm, hn::MulAdd(a, gIm, im[i]));
        }
    }
    for (std::size_t i = 0; i < kCount; ++i, sums += 2 * kPack) {
        V kd = hn::Mul(hn::LoadU(d, geometry), hn::Set(d, u[i].x));
        kd = hn::MulAdd(hn::LoadU(d, geometry + kPack), hn::Set(d, u[i].y), kd);
        kd = hn::MulAdd(hn::LoadU(d, geometry + 2 * kPack), hn::Set(d, u[i].z), kd);
        V s;
        V c;
        SinCos(d, kd, s, c);
        if constexpr (kDamped) {
            const V damping = hn::Exp(
                d, hn::MulAdd(hn::LoadU(d, geometry + 4 * kPack), kd, hn::LoadU(d, geometry + 3 * kPack)));
            s = hn::Mul(s, damping);
            c = hn::Mul(c, damping);
        }
        hn::StoreU(hn::MulAdd(re[i], c, hn::MulAdd(im[i], s, hn::LoadU(d, sums))), d, sums);
        hn::StoreU(hn::NegMulAdd(re[i], s, hn::MulAdd(im[i], c, hn::LoadU(d, sums + kPack))), d,
                   sums + kPack);
    }
}

template <bool kDamped>
HWY_INLINE void AddPack(const ZfFarField::Sources& sources, std::size_t pack,
                        const ZfFarField::Tables& tables, double* orders, double* sums) {
    const Tag d;
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t pairs = n * (n + 1) / 2;
    const std::size_t ringStride = n * kValues * kPack;
    const std::size_t firstDirection = tables.segments[0].first;
    // A pack may be wider than a vector: its parts are independent.
    for (std::size_t part = 0; part < kPack; part += hn::Lanes(d)) {
        const double* const geometry = sources.geometry.data() + pack * kGeometry * kPack + part;
        for (std::size_t first = 0; first < tables.segmentCount; first += kRings) {
            const std::size_t rings = std::min(kRings, tables.segmentCount - first);
            const double* theta[kRings];
            for (std::size_t r = 0; r < kRings; ++r)
                theta[r] = tables.theta + (first + std::min(r, rings - 1)) * pairs;
            const double* coefficient = sources.coefficients.data() + pack * pairs * kValues * kPack + part;
            for (std::size_t m = 0; m < n; ++m) {
                coefficient = SumOverDegrees(d, n - m, coefficient, theta,
                                             orders + m * kValues * kPack + part, ringStride);
                for (const double*& ring : theta) ring += n - m;
            }
            for (std::size_t r = 0; r < rings; ++r) {
                const ZfFarFieldDirections::Segment& segment = tables.segments[first + r];
                const std::size_t end = segment.first - firstDirection + segment.count;
                const double* const ring = orders + r * ringStride + part;
                std::size_t i = segment.first - firstDirection;
                for (; i + 4 <= end; i += 4)
                    AddDirections<kDamped, 4>(d, n, ring, tables.powers + i * 2 * n, geometry,
                                              tables.directions + i, sums + i * 2 * kPack + part);
                for (; i < end; ++i)
                    AddDirections<kDamped, 1>(d, n, ring, tables.powers + i * 2 * n, geometry,
                                              tables.directions + i, sums + i * 2 * kPack + part);
            }
        }
    }
}

void AddPacks(const ZfFarField::Sources& sources, const ZfFarField::Tables& tables, double* orders,
              double* sums) {
    for (std::size_t pack = 0; pack < sources.packs; ++pack) {
        if (sources.damped)
            AddPack<true>(sources, pack, tables, orders, sums);
        else
            AddPack<false>(sources, pack, tables, orders, sums);
    }
}

}  // namespace zf::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace zf {
HWY_EXPORT(AddPacks);
}  // namespace zf

namespace {

/// Two z of one ring: the same polar angle, up to the rounding of unit vectors.
constexpr double kRingTolerance = 1e-15;

using Direction = ZfFarFieldDirections::Direction;

/// p_lm(z) for m = 0 .. n-1 and l = m .. n-1.
void FillThetaFactors(std::size_t n, double z, double* out) {
    const double* const gammas = HarmonicGammas();
    for (std::size_t m = 0; m < n; ++m) {
        double before = 0.0;
        double p = 1.0;
        for (std::size_t l = m; l < n; ++l) {
            *out++ = p;
            const double next = z * p - gammas[(l + 1) * (l + 2) / 2 + m] * before;
            before = p;
            p = next;
        }
    }
}

void FillPowers(std::size_t n, const Direction& u, double* out) {
    std::complex<double> power = 1.0;
    for (std::size_t m = 0; m < n; ++m) {
        *out++ = power.real();
        *out++ = power.imag();
        power = {power.real() * u.x - power.imag() * u.y, power.real() * u.y + power.imag() * u.x};
    }
}

std::size_t Pairs(std::int32_t size) {
    const auto n = static_cast<std::size_t>(size);
    return n * (n + 1) / 2;
}

/// Coefficients of one source: the limit (-i)^(l+1) of h1_l, and a factor of the caller's.
void PutCoefficients(const ZfFreeElectron& electron, std::int32_t size, double factor, double* out) {
    const std::vector<HarmonicPair> pairs = HarmonicPairs(electron.A);
    for (std::int32_t m = 0; m < size; ++m) {
        for (std::int32_t l = m; l < size; ++l, out += 4 * ZfFarField::kPack) {
            if (l >= electron.A.L) continue;
            const HarmonicPair& pair = pairs[static_cast<std::size_t>(l * (l + 1) / 2 + m)];
            const std::complex<double> c = factor * IPower(l + 1) * pair.c;
            const std::complex<double> d = factor * IPower(l + 1) * pair.d;
            out[0] = c.real();
            out[ZfFarField::kPack] = c.imag();
            out[2 * ZfFarField::kPack] = d.real();
            out[3 * ZfFarField::kPack] = d.imag();
        }
    }
}

/// Phase and thermal damping of one source; true if it is damped.
bool PutGeometry(const ZfFreeElectron& electron, const ZfFreeElectron& emitter, double* out) {
    const double k = emitter.k;
    const double* p = electron.position.Data();
    const double rho = std::sqrt(NormSquared(electron.position));
    const double u = electron.Uiso + emitter.Uiso;
    const bool damped = u > 0.0 && rho > 0.0;
    const double values[] = {k * p[0], k * p[1], k * p[2], damped ? -k * k * u : 0.0,
                             damped ? k * u / rho : 0.0};
    for (const double value : values) {
        *out = value;
        out += ZfFarField::kPack;
    }
    return damped;
}

ZfFarField::Sources PackSources(std::span<const ZfFreeElectron> electrons, const ZfFreeElectron& emitter,
                                double dampingPerMetre) {
    constexpr std::size_t kPack = ZfFarField::kPack;
    ZfFarField::Sources sources;
    for (const ZfFreeElectron& electron : electrons) sources.L = std::max(sources.L, electron.A.L);
    sources.packs = (electrons.size() + kPack - 1) / kPack;
    const std::size_t packCoefficients = Pairs(sources.L) * 4 * kPack;
    sources.coefficients.assign(sources.packs * packCoefficients, 0.0);
    sources.geometry.assign(sources.packs * 5 * kPack, 0.0);
    for (std::size_t e = 0; e < electrons.size(); ++e) {
        const double rho = std::sqrt(NormSquared(electrons[e].position));
        PutCoefficients(electrons[e], sources.L, std::exp(-rho * dampingPerMetre),
                        sources.coefficients.data() + e / kPack * packCoefficients + e % kPack);
        const bool damped =
            PutGeometry(electrons[e], emitter, sources.geometry.data() + e / kPack * 5 * kPack + e % kPack);
        sources.damped = sources.damped || damped;
    }
    return sources;
}

/// Amplitudes of the directions of a task from one set of sources.
void Sum(const ZfFarField::Sources& sources, const ZfFarFieldDirections& all,
         const ZfFarFieldDirections::Task& task, std::vector<double>& scratch,
         ZfFarField::Amplitudes& result) {
    constexpr std::size_t kPack = ZfFarField::kPack;
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t first = all.segments[task.firstSegment].first;
    const ZfFarFieldDirections::Segment& last = all.segments[task.endSegment - 1];
    const std::size_t count = last.first + last.count - first;
    const std::size_t segments = task.endSegment - task.firstSegment;

    const std::size_t thetaSize = segments * Pairs(sources.L);
    const std::size_t powersSize = count * 2 * n;
    const std::size_t ordersSize = 4 * n * 4 * kPack;
    const std::size_t sumsSize = count * 2 * kPack;
    scratch.assign(thetaSize + powersSize + ordersSize + sumsSize, 0.0);
    double* const theta = scratch.data();
    double* const powers = theta + thetaSize;
    double* const orders = powers + powersSize;
    double* const sums = orders + ordersSize;

    for (std::size_t s = 0; s < segments; ++s)
        FillThetaFactors(n, all.segments[task.firstSegment + s].z, theta + s * Pairs(sources.L));
    for (std::size_t i = 0; i < count; ++i) FillPowers(n, all.directions[first + i], powers + i * 2 * n);
    const ZfFarField::Tables tables = {all.directions.data() + first, all.segments.data() + task.firstSegment,
                                       segments, theta, powers};
    using namespace zf;
    HWY_DYNAMIC_DISPATCH(AddPacks)(sources, tables, orders, sums);
    for (std::size_t i = 0; i < count; ++i) {
        double re = 0.0;
        double im = 0.0;
        for (std::size_t lane = 0; lane < kPack; ++lane) {
            re += sums[i * 2 * kPack + lane];
            im += sums[i * 2 * kPack + kPack + lane];
        }
        result[i] = {re, im};
    }
}

}  // namespace

void ZfFarFieldDirections::Add(std::size_t index, double x, double y, double z) {
    directions.push_back({x, y, z, index});
}

void ZfFarFieldDirections::OrderIntoRings() {
    std::stable_sort(directions.begin(), directions.end(),
                     [](const Direction& a, const Direction& b) { return a.z > b.z; });
    segments.clear();
    tasks.clear();
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const bool sameRing = !segments.empty() && segments.back().z - directions[i].z < kRingTolerance;
        if (!sameRing || segments.back().count == kTaskDirections)
            segments.push_back({sameRing ? segments.back().z : directions[i].z, i, 0});
        ++segments.back().count;
    }
    std::size_t inTask = kTaskDirections;
    for (std::size_t s = 0; s < segments.size(); ++s) {
        if (inTask + segments[s].count > kTaskDirections) {
            tasks.push_back({s, s});
            inTask = 0;
        }
        tasks.back().endSegment = s + 1;
        inTask += segments[s].count;
    }
}

bool ZfFarField::Serves(const ZfVectorFreeElectron& list) {
    if (list.electrons.empty() || list.LargestL() > kLargestKernelL) return false;
    const double k = list.electrons.front().k;
    return std::all_of(list.electrons.begin(), list.electrons.end(), [k](const ZfFreeElectron& electron) {
        return k * std::sqrt(NormSquared(electron.position)) <= kLargestKernelPhase;
    });
}

ZfFarField::ZfFarField(const ZfVectorFreeElectron& list) {
    const std::span<const ZfFreeElectron> electrons = list.electrons;
    const ZfFreeElectron& emitter = electrons.front();
    direct_ = PackSources(electrons.first(1), emitter, 0.0);
    scattered_ =
        PackSources(electrons.subspan(1), emitter, list.meanFreePath > 0.0 ? 2.0 / list.meanFreePath : 0.0);
}

void ZfFarField::Calculate(const ZfFarFieldDirections& all, const ZfFarFieldDirections::Task& task,
                           std::vector<double>& scratch, Amplitudes& direct, Amplitudes& scattered) const {
    Sum(direct_, all, task, scratch, direct);
    Sum(scattered_, all, task, scratch, scattered);
}

#endif  // HWY_ONCE
