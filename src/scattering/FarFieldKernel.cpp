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

/// Adds the waves of a pack in one direction to `sum`, kPack real parts and kPack imaginary parts.
template <bool kDamped>
HWY_INLINE void AddDirection(Tag d, V re, V im, const double* HWY_RESTRICT geometry,
                             const ZfFarFieldDirections::Direction& u, double* HWY_RESTRICT sum) {
    V kd = hn::Mul(hn::LoadU(d, geometry), hn::Set(d, u.x));
    kd = hn::MulAdd(hn::LoadU(d, geometry + kPack), hn::Set(d, u.y), kd);
    kd = hn::MulAdd(hn::LoadU(d, geometry + 2 * kPack), hn::Set(d, u.z), kd);
    V s;
    V c;
    SinCos(d, kd, s, c);
    if constexpr (kDamped) {
        const V damping = hn::Exp(
            d, hn::MulAdd(hn::LoadU(d, geometry + 4 * kPack), kd, hn::LoadU(d, geometry + 3 * kPack)));
        s = hn::Mul(s, damping);
        c = hn::Mul(c, damping);
    }
    hn::StoreU(hn::MulAdd(re, c, hn::MulAdd(im, s, hn::LoadU(d, sum))), d, sum);
    hn::StoreU(hn::NegMulAdd(re, s, hn::MulAdd(im, c, hn::LoadU(d, sum + kPack))), d, sum + kPack);
}

/// Sums over m for kCount groups of one ring, which share the loads of the orders. With w = |x| + i |y|, the
/// power m of the mirror images is w^m, its conjugate, and (-1)^m times both.
template <bool kDamped, std::size_t kCount>
HWY_INLINE void AddGroups(Tag d, std::size_t n, const double* HWY_RESTRICT orders,
                          const double* HWY_RESTRICT powers, const double* HWY_RESTRICT geometry,
                          const ZfFarFieldDirections& all, std::size_t group, double* HWY_RESTRICT sums) {
    // [parity of m][group]: sums of G Re w^m and of H Im w^m.
    V gRe[2][kCount];
    V gIm[2][kCount];
    V hRe[2][kCount];
    V hIm[2][kCount];
    for (std::size_t parity = 0; parity < 2; ++parity) {
        for (std::size_t i = 0; i < kCount; ++i) {
            gRe[parity][i] = gIm[parity][i] = hRe[parity][i] = hIm[parity][i] = hn::Zero(d);
        }
    }
    const auto addOrder = [&](std::size_t m, std::size_t parity) HWY_ATTR {
        const double* const o = orders + m * kValues * kPack;
        const V o0 = hn::LoadU(d, o);
        const V o1 = hn::LoadU(d, o + kPack);
        const V o2 = hn::LoadU(d, o + 2 * kPack);
        const V o3 = hn::LoadU(d, o + 3 * kPack);
        for (std::size_t i = 0; i < kCount; ++i) {
            const V a = hn::Set(d, powers[(i * n + m) * 2]);
            const V b = hn::Set(d, powers[(i * n + m) * 2 + 1]);
            gRe[parity][i] = hn::MulAdd(a, o0, gRe[parity][i]);
            gIm[parity][i] = hn::MulAdd(a, o1, gIm[parity][i]);
            hRe[parity][i] = hn::MulAdd(b, o2, hRe[parity][i]);
            hIm[parity][i] = hn::MulAdd(b, o3, hIm[parity][i]);
        }
    };
    std::size_t m = 0;
    for (; m + 2 <= n; m += 2) {
        addOrder(m, 0);
        addOrder(m + 1, 1);
    }
    if (m < n) addOrder(m, 0);

    for (std::size_t i = 0; i < kCount; ++i) {
        // By the sign of x: even +- odd orders. The sign of x y turns that of the sines.
        const V gRePlus = hn::Add(gRe[0][i], gRe[1][i]);
        const V gImPlus = hn::Add(gIm[0][i], gIm[1][i]);
        const V hRePlus = hn::Add(hRe[0][i], hRe[1][i]);
        const V hImPlus = hn::Add(hIm[0][i], hIm[1][i]);
        const V gReMinus = hn::Sub(gRe[0][i], gRe[1][i]);
        const V gImMinus = hn::Sub(gIm[0][i], gIm[1][i]);
        const V hReMinus = hn::Sub(hRe[0][i], hRe[1][i]);
        const V hImMinus = hn::Sub(hIm[0][i], hIm[1][i]);
        const ZfFarFieldDirections::Group& members = all.groups[group + i];
        for (std::size_t k = 0; k < members.count; ++k, sums += 2 * kPack) {
            const ZfFarFieldDirections::Direction& u = all.directions[members.first + k];
            const bool left = u.x < 0.0;
            const bool turned = left != (u.y < 0.0);
            const V sign = hn::Set(d, turned ? -1.0 : 1.0);
            const V re = hn::MulAdd(sign, left ? hReMinus : hRePlus, left ? gReMinus : gRePlus);
            const V im = hn::MulAdd(sign, left ? hImMinus : hImPlus, left ? gImMinus : gImPlus);
            AddDirection<kDamped>(d, re, im, geometry, u, sums);
        }
    }
}

template <bool kDamped>
HWY_INLINE void AddPack(const ZfFarField::Sources& sources, std::size_t pack,
                        const ZfFarField::Tables& tables, double* orders, double* sums) {
    const Tag d;
    const ZfFarFieldDirections& all = tables.all;
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t pairs = n * (n + 1) / 2;
    const std::size_t ringStride = n * kValues * kPack;
    const std::size_t firstGroup = all.segments[tables.task.firstSegment].firstGroup;
    const std::size_t firstDirection = all.groups[firstGroup].first;
    // A pack may be wider than a vector: its parts are independent.
    for (std::size_t part = 0; part < kPack; part += hn::Lanes(d)) {
        const double* const geometry = sources.geometry.data() + pack * kGeometry * kPack + part;
        for (std::size_t first = tables.task.firstSegment; first < tables.task.endSegment; first += kRings) {
            const std::size_t rings = std::min(kRings, tables.task.endSegment - first);
            const double* theta[kRings];
            for (std::size_t r = 0; r < kRings; ++r)
                theta[r] = tables.theta + (first - tables.task.firstSegment + std::min(r, rings - 1)) * pairs;
            const double* coefficient = sources.coefficients.data() + pack * pairs * kValues * kPack + part;
            for (std::size_t m = 0; m < n; ++m) {
                coefficient = SumOverDegrees(d, n - m, coefficient, theta,
                                             orders + m * kValues * kPack + part, ringStride);
                for (const double*& ring : theta) ring += n - m;
            }
            for (std::size_t r = 0; r < rings; ++r) {
                const double* const ring = orders + r * ringStride + part;
                const std::size_t end = all.segments[first + r].endGroup;
                std::size_t g = all.segments[first + r].firstGroup;
                const auto powers = [&] { return tables.powers + (g - firstGroup) * 2 * n; };
                const auto sum = [&] {
                    return sums + (all.groups[g].first - firstDirection) * 2 * kPack + part;
                };
                for (; g + 2 <= end; g += 2)
                    AddGroups<kDamped, 2>(d, n, ring, powers(), geometry, all, g, sum());
                if (g < end) AddGroups<kDamped, 1>(d, n, ring, powers(), geometry, all, g, sum());
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

/// Components that are the same up to the rounding of unit vectors.
constexpr double kSameComponent = 1e-15;

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
    const double x = std::abs(u.x);
    const double y = std::abs(u.y);
    std::complex<double> power = 1.0;
    for (std::size_t m = 0; m < n; ++m) {
        *out++ = power.real();
        *out++ = power.imag();
        power = {power.real() * x - power.imag() * y, power.real() * y + power.imag() * x};
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
    const std::size_t first = all.FirstDirection(task);
    const std::size_t count = all.EndDirection(task) - first;
    const std::size_t segments = task.endSegment - task.firstSegment;
    const std::size_t firstGroup = all.segments[task.firstSegment].firstGroup;
    const std::size_t endGroup = all.segments[task.endSegment - 1].endGroup;

    const std::size_t thetaSize = segments * Pairs(sources.L);
    const std::size_t powersSize = (endGroup - firstGroup) * 2 * n;
    const std::size_t ordersSize = 4 * n * 4 * kPack;
    const std::size_t sumsSize = count * 2 * kPack;
    scratch.assign(thetaSize + powersSize + ordersSize + sumsSize, 0.0);
    double* const theta = scratch.data();
    double* const powers = theta + thetaSize;
    double* const orders = powers + powersSize;
    double* const sums = orders + ordersSize;

    const auto front = [&all](std::size_t group) -> const Direction& {
        return all.directions[all.groups[group].first];
    };
    for (std::size_t s = 0; s < segments; ++s)
        FillThetaFactors(n, front(all.segments[task.firstSegment + s].firstGroup).z,
                         theta + s * Pairs(sources.L));
    for (std::size_t g = firstGroup; g < endGroup; ++g)
        FillPowers(n, front(g), powers + (g - firstGroup) * 2 * n);
    const ZfFarField::Tables tables = {all, task, theta, powers};
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

/// By z, and on a ring by |x|, so that mirror images stand together; not-a-number stands last.
void ZfFarFieldDirections::SortDirections() {
    // Sorted by small keys; the place breaks ties, so that the order is one.
    using Key = std::pair<double, std::size_t>;
    std::vector<Key> keys(directions.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
        keys[i] = {std::isnan(directions[i].z) ? 2.0 : -directions[i].z, i};
    std::sort(keys.begin(), keys.end());
    for (auto ring = keys.begin(); ring != keys.end();) {
        auto end = ring;
        while (end != keys.end() && end->first - ring->first < kSameComponent) ++end;
        std::sort(ring, end, [this](const Key& a, const Key& b) {
            const double xa = std::abs(directions[a.second].x);
            const double xb = std::abs(directions[b.second].x);
            return xa != xb ? xa < xb : a.second < b.second;
        });
        ring = end;
    }
    std::vector<Direction> ordered(directions.size());
    std::transform(keys.begin(), keys.end(), ordered.begin(),
                   [this](const Key& key) { return directions[key.second]; });
    directions.swap(ordered);
}

/// Whether a direction is no mirror image of the one before.
bool ZfFarFieldDirections::StartsGroup(std::size_t direction) const {
    const Direction& a = directions[groups.back().first];
    const Direction& b = directions[direction];
    const bool mirrored = std::abs(std::abs(a.x) - std::abs(b.x)) < kSameComponent &&
                          std::abs(std::abs(a.y) - std::abs(b.y)) < kSameComponent;
    return !mirrored || groups.back().count == 4;
}

void ZfFarFieldDirections::Order() {
    SortDirections();
    groups.clear();
    segments.clear();
    tasks.clear();
    std::size_t inTask = kTaskDirections;
    for (std::size_t i = 0; i < directions.size(); ++i) {
        const bool sameRing =
            !groups.empty() &&
            directions[groups[segments.back().firstGroup].first].z - directions[i].z < kSameComponent;
        if (!sameRing || StartsGroup(i)) {
            const bool fullTask = inTask + 4 > kTaskDirections;
            if (fullTask) tasks.push_back({segments.size(), 0});
            if (fullTask || !sameRing) segments.push_back({groups.size(), 0});
            if (fullTask) inTask = 0;
            groups.push_back({i, 0});
            segments.back().endGroup = groups.size();
            tasks.back().endSegment = segments.size();
        }
        ++groups.back().count;
        ++inTask;
    }
}

std::size_t ZfFarFieldDirections::EndDirection(const Task& task) const {
    const Group& last = groups[segments[task.endSegment - 1].endGroup - 1];
    return last.first + last.count;
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
