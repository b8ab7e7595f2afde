#include "scattering/FarFieldKernel.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/FarFieldKernel.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/VectorMath-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

constexpr std::size_t kPack = kFarFieldPack;
constexpr std::size_t kValues = kFarFieldValues;
constexpr std::size_t kRings = 4;  // rings that share the loads of a coefficient

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

/// Phase factors of a pack in the directions of a task, damped if need be: by direction, kPack cosines and
/// kPack sines of kd.
template <bool kDamped, bool kEscaping>
HWY_INLINE void PhasesOfPack(const double* HWY_RESTRICT geometry, const FarFieldDirections::Direction* u,
                             std::size_t count, double* HWY_RESTRICT phases) {
    const Tag d;
    for (std::size_t part = 0; part < kPack; part += hn::Lanes(d)) {
        const double* const g = geometry + part;
        for (std::size_t i = 0; i < count; ++i) {
            V kd = hn::Mul(hn::LoadU(d, g), hn::Set(d, u[i].x));
            kd = hn::MulAdd(hn::LoadU(d, g + kPack), hn::Set(d, u[i].y), kd);
            kd = hn::MulAdd(hn::LoadU(d, g + 2 * kPack), hn::Set(d, u[i].z), kd);
            V s;
            V c;
            SinCos(d, kd, s, c);
            if constexpr (kDamped || kEscaping) {
                V exponent = hn::MulAdd(hn::LoadU(d, g + 4 * kPack), kd, hn::LoadU(d, g + 3 * kPack));
                if constexpr (kEscaping) {
                    const V path = hn::Set(d, 1.0 / std::max(u[i].z, kFarFieldGrazing));
                    exponent = hn::MulAdd(hn::LoadU(d, g + 5 * kPack), path, exponent);
                }
                const V damping = hn::Exp(d, exponent);
                s = hn::Mul(s, damping);
                c = hn::Mul(c, damping);
            }
            hn::StoreU(c, d, phases + i * 2 * kPack + part);
            hn::StoreU(s, d, phases + i * 2 * kPack + kPack + part);
        }
    }
}

/// Sums over m for kCount groups of one ring, which share the loads of the orders. With w = |x| + i |y|, the
/// power m of the mirror images is w^m, its conjugate, and (-1)^m times both.
/// `phases` and `sums` begin at the first direction of the first group.
template <bool kPhases, std::size_t kCount>
HWY_INLINE void AddGroups(Tag d, std::size_t n, const double* HWY_RESTRICT orders,
                          const double* HWY_RESTRICT powers, const double* HWY_RESTRICT phases,
                          const FarFieldDirections& all, std::size_t group, double* HWY_RESTRICT sums) {
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
        const FarFieldDirections::Group& members = all.groups[group + i];
        for (std::size_t k = 0; k < members.count; ++k, sums += 2 * kPack, phases += 2 * kPack) {
            const FarFieldDirections::Direction& u = all.directions[members.first + k];
            const bool left = u.x < 0.0;
            const bool turned = left != (u.y < 0.0);
            const V sign = hn::Set(d, turned ? -1.0 : 1.0);
            const V re = hn::MulAdd(sign, left ? hReMinus : hRePlus, left ? gReMinus : gRePlus);
            const V im = hn::MulAdd(sign, left ? hImMinus : hImPlus, left ? gImMinus : gImPlus);
            const V sumRe = hn::LoadU(d, sums);
            const V sumIm = hn::LoadU(d, sums + kPack);
            if constexpr (kPhases) {
                const V c = hn::LoadU(d, phases);
                const V s = hn::LoadU(d, phases + kPack);
                hn::StoreU(hn::MulAdd(re, c, hn::MulAdd(im, s, sumRe)), d, sums);
                hn::StoreU(hn::NegMulAdd(re, s, hn::MulAdd(im, c, sumIm)), d, sums + kPack);
            } else {
                hn::StoreU(hn::Add(sumRe, re), d, sums);
                hn::StoreU(hn::Add(sumIm, im), d, sums + kPack);
            }
        }
    }
}

/// One wave of one pack.
template <bool kPhases>
HWY_INLINE void AddPack(std::size_t n, const double* HWY_RESTRICT coefficients, const FarFieldTables& tables,
                        const double* phases, double* orders, double* sums) {
    const Tag d;
    const FarFieldDirections& all = tables.all;
    const std::size_t pairs = n * (n + 1) / 2;
    const std::size_t ringStride = n * kValues * kPack;
    const std::size_t firstGroup = all.segments[tables.task.firstSegment].firstGroup;
    const std::size_t firstDirection = all.groups[firstGroup].first;
    // A pack may be wider than a vector: its parts are independent.
    for (std::size_t part = 0; part < kPack; part += hn::Lanes(d)) {
        for (std::size_t first = tables.task.firstSegment; first < tables.task.endSegment; first += kRings) {
            const std::size_t rings = std::min(kRings, tables.task.endSegment - first);
            const double* theta[kRings];
            for (std::size_t r = 0; r < kRings; ++r)
                theta[r] = tables.theta + (first - tables.task.firstSegment + std::min(r, rings - 1)) * pairs;
            const double* coefficient = coefficients + part;
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
                const auto place = [&] { return (all.groups[g].first - firstDirection) * 2 * kPack + part; };
                for (; g + 2 <= end; g += 2)
                    AddGroups<kPhases, 2>(d, n, ring, powers(), phases + place(), all, g, sums + place());
                if (g < end)
                    AddGroups<kPhases, 1>(d, n, ring, powers(), phases + place(), all, g, sums + place());
            }
        }
    }
}

void AddPacks(const FarFieldSources& sources, const FarFieldTables& tables, double* scratch, double* sums) {
    const auto n = static_cast<std::size_t>(sources.L);
    const std::size_t packSize = n * (n + 1) / 2 * kValues * kPack;
    const std::size_t first = tables.all.FirstDirection(tables.task);
    const std::size_t directions = tables.all.EndDirection(tables.task) - first;
    double* const phases = scratch;
    double* const orders = phases + directions * 2 * kPack;
    for (std::size_t pack = 0; pack < sources.packs; ++pack) {
        const double* const geometry = sources.geometry.data() + pack * kFarFieldGeometry * kPack;
        const FarFieldDirections::Direction* const u = tables.all.directions.data() + first;
        if (sources.escaping)
            PhasesOfPack<true, true>(geometry, u, directions, phases);
        else if (sources.damped)
            PhasesOfPack<true, false>(geometry, u, directions, phases);
        else if (sources.displaced)
            PhasesOfPack<false, false>(geometry, u, directions, phases);
        for (std::size_t wave = 0; wave < sources.waves; ++wave) {
            const double* const coefficients =
                sources.coefficients.data() + (wave * sources.packs + pack) * packSize;
            double* const waveSums = sums + wave * directions * 2 * kPack;
            if (sources.displaced || sources.escaping)
                AddPack<true>(n, coefficients, tables, phases, orders, waveSums);
            else
                AddPack<false>(n, coefficients, tables, phases, orders, waveSums);
        }
    }
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace qvre {

HWY_EXPORT(AddPacks);

void AddFarField(const FarFieldSources& sources, const FarFieldTables& tables, double* scratch,
                 double* sums) {
    HWY_DYNAMIC_DISPATCH(AddPacks)(sources, tables, scratch, sums);
}

std::size_t FarFieldScratchSize(std::int32_t L, std::size_t directions) {
    constexpr std::size_t kRings = HWY_NAMESPACE::kRings;
    return (directions * 2 + kRings * static_cast<std::size_t>(L) * kFarFieldValues) * kFarFieldPack;
}

}  // namespace qvre

#endif  // HWY_ONCE
