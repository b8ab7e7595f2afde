#include "scattering/LevelSynthesis.h"

#include <algorithm>
#include <cmath>

#include "foundation/Constants.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "scattering/LevelSynthesis.cpp"
#include <hwy/foreach_target.h>
// Behind foreach_target.h, which includes this file once for every instruction set.
#include "scattering/PackVectors-inl.h"

#ifndef QVRE_LEVELSYNTHESIS_ONCE
#define QVRE_LEVELSYNTHESIS_ONCE

namespace qvre {

/// Period of the coarsest fold of a block's own levels; orders are handled in classes modulo it.
constexpr std::int32_t kClassPeriod = 32;
constexpr std::size_t kCoarseRows = 16;  ///< half rows of the lattice of that period
constexpr std::size_t kDegreesAtOnce = 4;

/// A sum over some rows of waves folded with a period: with the sign (-1)^j where it alternates.
struct FoldedSum {
    PackedComplex* out;  ///< over (l, m)
    std::int32_t period;
    bool alternating;
    std::size_t firstRow;
    std::size_t rowStep;
};

/// One group of one block.
struct GroupSynthesis {
    const PackedTable& waves;
    const std::vector<double>& bessel;
    const ThetaRows& theta;
    const std::vector<double>& weights;
    std::size_t rows;
    std::int32_t order;
    std::int32_t firstL;
    std::int32_t endL;
    const std::vector<FoldedSum>& sums;    ///< of the block's own rows
    const std::vector<FoldedSum>& coarse;  ///< of the rows of the coarse lattice
    LevelScratch& scratch;
};

}  // namespace qvre

#endif

HWY_BEFORE_NAMESPACE();
namespace qvre::HWY_NAMESPACE {

/// A vector with few registers takes +M and -M one after the other.
constexpr std::size_t kSignsAtOnce = HWY_MAX_BYTES >= 64 ? 2 : 1;

/// Sums over L of c j Theta for the rows of a tile; `x` holds kSigns numbers a degree, `out` is by sign and
/// row.
template <std::size_t kSigns>
HWY_INLINE void SumDegrees(const Part& part, const PackedComplex* HWY_RESTRICT x, std::size_t stride,
                           std::size_t count, const double* HWY_RESTRICT theta, PackedComplex* const* out) {
    VC sum[kSigns][kRowTile];
    for (auto& sign : sum)
        for (VC& s : sign) s = part.Zero();
    for (std::size_t i = 0; i < count; ++i, x += stride, theta += kRowTile) {
        VC value[kSigns];
        for (std::size_t s = 0; s < kSigns; ++s) value[s] = part.Load(x[s]);
        for (std::size_t r = 0; r < kRowTile; ++r) {
            const V factor = hn::Set(part.d, theta[r]);
            for (std::size_t s = 0; s < kSigns; ++s) sum[s][r] = MulAdd(value[s], factor, sum[s][r]);
        }
    }
    for (std::size_t s = 0; s < kSigns; ++s)
        for (std::size_t r = 0; r < kRowTile; ++r) part.Store(sum[s][r], out[s][r]);
}

/// F of the orders M and -M in all rows; `slot` is by sign, then parity of L + M.
void SynthesiseOrder(const Part& part, const GroupSynthesis& g, std::int32_t M,
                     PackedComplex* const (*slot)[2]) {
    // The factors of +M carry the sign (-1)^M.
    const double sign = M % 2 == 0 ? 1.0 : -1.0;
    PackedComplex* const x = g.scratch.column.data();
    const auto count = static_cast<std::size_t>(std::max(g.order - M, 0));
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t L = static_cast<std::size_t>(M) + i;
        const double j = g.bessel[L];
        const PackedComplex* const c = g.waves.data() + L * (L + 1);
        part.Store(Scale(part.Load(c[M]), hn::Set(part.d, sign * j)), x[2 * i]);
        part.Store(Scale(part.Load(*(c - M)), hn::Set(part.d, j)), x[2 * i + 1]);
    }
    for (std::size_t tile = 0; tile < g.rows / kRowTile; ++tile) {
        const bool vanishes = M >= g.theta.limit[tile];
        for (std::size_t odd = 0; odd < 2; ++odd) {
            const std::size_t degrees = vanishes ? 0 : (count + 1 - odd) / 2;
            const double* const theta = g.theta.Tile(M, tile) + (odd == 0 ? 0 : g.theta.OddBegin(M));
            PackedComplex* const out[2] = {slot[0][odd] + tile * kRowTile, slot[1][odd] + tile * kRowTile};
            for (std::size_t s = 0; s < 2; s += kSignsAtOnce)
                SumDegrees<kSignsAtOnce>(part, x + 2 * odd + s, 4, degrees, theta, out + s);
        }
    }
}

/// Weighted sums over the rows for up to kDegreesAtOnce degrees.
template <std::size_t kCount>
HWY_INLINE void SumRows(const Part& part, const PackedComplex* HWY_RESTRICT values, std::size_t count,
                        const double* const* weights, std::size_t weightStep, V sign,
                        PackedComplex* const* out) {
    VC sum[kCount];
    for (VC& s : sum) s = part.Zero();
    for (std::size_t i = 0; i < count; ++i) {
        const VC value = part.Load(values[i]);
        for (std::size_t c = 0; c < kCount; ++c)
            sum[c] = MulAdd(value, hn::Set(part.d, weights[c][i * weightStep]), sum[c]);
    }
    for (std::size_t c = 0; c < kCount; ++c) part.Store(MulAdd(sum[c], sign, part.Load(*out[c])), *out[c]);
}

/// The orders of `slots` folded onto m, in the rows of a sum, into the scratch; returns how many rows.
std::size_t FoldRows(const Part& part, std::int32_t m, std::int32_t odd, const std::vector<OrderSlot>& slots,
                     const FoldedSum& sum, std::size_t rows, LevelScratch& scratch) {
    std::vector<const PackedComplex*>& plus = scratch.plus;
    std::vector<const PackedComplex*>& minus = scratch.minus;
    plus.clear();
    minus.clear();
    for (const OrderSlot& slot : slots) {
        const std::int32_t distance = slot.M - m;
        if (distance % sum.period != 0) continue;
        (sum.alternating && distance / sum.period % 2 != 0 ? minus : plus).push_back(slot.rows[odd]);
    }
    std::size_t count = 0;
    for (std::size_t row = sum.firstRow; row < rows; row += sum.rowStep) {
        VC folded = part.Zero();
        for (const PackedComplex* const f : plus) folded = Add(folded, part.Load(f[row]));
        for (const PackedComplex* const f : minus) folded = Sub(folded, part.Load(f[row]));
        part.Store(folded, scratch.values[count++]);
    }
    return count;
}

/// Folds the orders of `slots` onto m and projects on the degrees of the group.
void ProjectOrder(const Part& part, const GroupSynthesis& g, std::int32_t m,
                  const std::vector<OrderSlot>& slots, const FoldedSum& sum, std::size_t rows,
                  std::size_t firstWeight, std::size_t weightStep) {
    const std::int32_t size = m < 0 ? -m : m;
    const V sign = hn::Set(part.d, m > 0 && m % 2 == 1 ? -1.0 : 1.0);
    PackedComplex* const values = g.scratch.values.data();
    for (std::int32_t odd = 0; odd < 2; ++odd) {
        std::int32_t l = std::max(size, g.firstL);
        if ((l + size) % 2 != odd) ++l;
        if (l >= g.endL) continue;
        const std::size_t count = FoldRows(part, m, odd, slots, sum, rows, g.scratch);
        while (l < g.endL) {
            const double* weights[kDegreesAtOnce];
            PackedComplex* out[kDegreesAtOnce];
            std::size_t degrees = 0;
            for (; l < g.endL && degrees < kDegreesAtOnce; l += 2, ++degrees) {
                weights[degrees] = g.weights.data() +
                                   static_cast<std::size_t>(l * (l + 1) / 2 + size) * g.rows + firstWeight;
                out[degrees] = sum.out + (l * (l + 1) + m);
            }
            switch (degrees) {
                case 1:
                    SumRows<1>(part, values, count, weights, weightStep, sign, out);
                    break;
                case 2:
                    SumRows<2>(part, values, count, weights, weightStep, sign, out);
                    break;
                case 3:
                    SumRows<3>(part, values, count, weights, weightStep, sign, out);
                    break;
                default:
                    SumRows<kDegreesAtOnce>(part, values, count, weights, weightStep, sign, out);
            }
        }
    }
}

/// Folds the orders of a class with its period, in the rows of the coarse lattice.
void FoldToCoarse(const Part& part, const GroupSynthesis& g, std::int32_t residue,
                  const std::vector<OrderSlot>& slots) {
    const FoldedSum all = {nullptr, kClassPeriod, false, 1, 2};
    for (std::int32_t odd = 0; odd < 2; ++odd) {
        const std::size_t count = FoldRows(part, residue, odd, slots, all, g.rows, g.scratch);
        PackedComplex* const out =
            g.scratch.coarse.data() + static_cast<std::size_t>(residue * 2 + odd) * kCoarseRows;
        for (std::size_t row = 0; row < count; ++row) part.Store(part.Load(g.scratch.values[row]), out[row]);
    }
}

/// The orders that fold onto r or -r of the class period, all the way to the sums of the block's own levels.
void AddClass(const Part& part, const GroupSynthesis& g, std::int32_t r) {
    std::vector<OrderSlot>& slots = g.scratch.slots;
    slots.clear();
    PackedComplex* at = g.scratch.samples.data();
    for (std::int32_t M = 0; M < g.order; ++M) {
        const std::int32_t rest = M % kClassPeriod;
        if (rest != r && kClassPeriod - rest != r) continue;
        PackedComplex* const slot[2][2] = {{at, at + g.rows}, {at + 2 * g.rows, at + 3 * g.rows}};
        at += 4 * g.rows;
        SynthesiseOrder(part, g, M, slot);
        slots.push_back({M, {slot[0][0], slot[0][1]}});
        if (M > 0) slots.push_back({-M, {slot[1][0], slot[1][1]}});
    }
    const std::int32_t opposite = (kClassPeriod - r) % kClassPeriod;
    if (!g.coarse.empty()) {
        FoldToCoarse(part, g, r, slots);
        if (opposite != r) FoldToCoarse(part, g, opposite, slots);
    }
    for (std::int32_t m = 1 - g.endL; m < g.endL; ++m) {
        if ((m - r) % kClassPeriod != 0 && (m + r) % kClassPeriod != 0) continue;
        for (const FoldedSum& sum : g.sums)
            ProjectOrder(part, g, m, slots, sum, g.rows, sum.firstRow, sum.rowStep);
    }
}

void AddGroup(const GroupSynthesis& g) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d)) {
        const Part part = {d, first};
        for (std::int32_t r = 0; r <= kClassPeriod / 2; ++r) AddClass(part, g, r);
        if (g.coarse.empty()) continue;
        std::vector<OrderSlot>& slots = g.scratch.slots;
        slots.clear();
        for (std::int32_t residue = 0; residue < kClassPeriod; ++residue) {
            const PackedComplex* const rows =
                g.scratch.coarse.data() + static_cast<std::size_t>(residue) * 2 * kCoarseRows;
            slots.push_back({residue, {rows, rows + kCoarseRows}});
        }
        for (std::int32_t m = 1 - g.endL; m < g.endL; ++m)
            for (const FoldedSum& sum : g.coarse)
                ProjectOrder(part, g, m, slots, sum, kCoarseRows, 2 * sum.firstRow + 1, 2 * sum.rowStep);
    }
}

/// target = a target + b other.
void Combine(PackedTable& target, double a, double b, const PackedTable& other) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d)) {
        const Part part = {d, first};
        for (std::size_t i = 0; i < target.size(); ++i)
            part.Store(MulAdd(part.Load(other[i]), hn::Set(d, b), Scale(part.Load(target[i]), hn::Set(d, a))),
                       target[i]);
    }
}

void Refine(const PackedTable& integral, const PackedTable& before, const ZfExpansionGrid& grid,
            PackedTable& result, PackedChange& change) {
    const Tag d;
    for (std::size_t first = 0; first < kTranslationPack; first += hn::Lanes(d)) {
        const Part part = {d, first};
        V size = hn::Zero(d);
        V difference = hn::Zero(d);
        for (std::size_t i = 0; i < result.size(); ++i) {
            const double j = 3.0 * grid.besselAtGroup[static_cast<std::size_t>(grid.lOfIndex.block[i])];
            const VC now = MulAdd(part.Load(before[i]), hn::Set(d, -1.0 / j),
                                  Scale(part.Load(integral[i]), hn::Set(d, 4.0 / j)));
            const VC old = part.Load(result[i]);
            const VC step = Sub(now, old);
            size = hn::Add(size, MulConj(old, old).re);
            difference = hn::Add(difference, MulConj(step, step).re);
            part.Store(now, result[i]);
        }
        hn::StoreU(size, d, change.size + first);
        hn::StoreU(difference, d, change.difference + first);
    }
}

}  // namespace qvre::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace qvre {

HWY_EXPORT(AddGroup);
HWY_EXPORT(Combine);
HWY_EXPORT(Refine);

namespace {

constexpr std::int32_t kUnfolded = 1 << 20;  // a period that no two orders share
constexpr std::int32_t kFinePeriod = 128;    // of level 14

/// From this l size on waves mostly need level 14, and the sums for it are made along with those of the other
/// levels.
constexpr std::int32_t kFineLSize = 23;

}  // namespace

void RefineLevel(const PackedTable& integral, const PackedTable& before, const ZfExpansionGrid& grid,
                 PackedTable& result, PackedChange& change) {
    HWY_DYNAMIC_DISPATCH(Refine)(integral, before, grid, result, change);
}

void LevelSynthesis::Start(const ExpansionTables& tables, const PackedTable& waves,
                           const std::vector<std::int32_t>& orders) {
    tables_ = &tables;
    waves_ = &waves;
    orders_ = orders;
    largestOrder_ = *std::max_element(orders.begin(), orders.end());
    blocks_ = 0;
    fineBlocks_ = 0;
}

bool LevelSynthesis::Serves(std::int32_t level) const {
    return level <= 14 || (level <= kLastSynthesisedLevel && largestOrder_ + tables_->lSize <= kFinePeriod);
}

// The two call each other to a depth of two: level 15 asks for level 14, and no other asks for any.
// NOLINTBEGIN(misc-no-recursion)
const PackedTable& LevelSynthesis::Level(std::int32_t level) {
    const bool early = tables_->lSize >= kFineLSize;
    const std::int32_t block = level <= 12 ? 0 : (level - 11) / 2;
    while (blocks_ <= block) AddBlock(blocks_, true, early);
    if (level % 2 == 0 && level > 12) {
        while (fineBlocks_ <= block) AddBlock(fineBlocks_, false, true);
        levels_[static_cast<std::size_t>(level)] = fine_;
        ScaleLevel(level);
    }
    return levels_[static_cast<std::size_t>(level)];
}

/// From the sum over the rows to the integral.
void LevelSynthesis::ScaleLevel(std::int32_t level) {
    const double step = kPi / static_cast<double>(1 << (level / 2));
    PackedTable& table = levels_[static_cast<std::size_t>(level)];
    if (level % 2 == 0)
        HWY_DYNAMIC_DISPATCH(Combine)(table, step, 0.0, table);
    else
        HWY_DYNAMIC_DISPATCH(Combine)(table, 0.5 * step, 0.5, levels_[static_cast<std::size_t>(level) - 1]);
}

/// The sums of a block for its own levels, or for the fine lattice, or both.
void LevelSynthesis::AddBlock(std::int32_t block, bool own, bool fine) {
    const auto n = static_cast<std::size_t>(tables_->lSize);
    const auto sumOf = [&](std::int32_t level) {
        PackedTable& table = levels_[static_cast<std::size_t>(level)];
        table.assign(n * n, PackedComplex());
        return table.data();
    };
    // Which level wants which rows of the block's lattice, folded with which period.
    std::vector<FoldedSum> sums;
    std::vector<FoldedSum> coarse;
    if (own && block == 0) {
        sums = {{sumOf(12), 64, false, 0, 1}, {sumOf(11), 32, true, 0, 2}, {sumOf(10), 32, false, 1, 2}};
        coarse = {{sumOf(9), 16, true, 0, 2}, {sumOf(8), 16, false, 1, 2}, {sumOf(7), 8, true, 1, 4},
                  {sumOf(6), 8, false, 3, 4}, {sumOf(5), 4, true, 3, 8},   {sumOf(4), 4, false, 7, 8}};
    } else if (own && block == 1) {
        sums = {{sumOf(13), 64, true, 0, 1}};
    } else if (own) {
        sums = {{sumOf(15), kUnfolded, false, 0, 1}};
    }
    if (fine && fineBlocks_ == block) {
        if (block == 0) fine_.assign(n * n, PackedComplex());
        sums.push_back({fine_.data(), block < 2 ? kFinePeriod : kUnfolded, false, 0, 1});
        ++fineBlocks_;
    }
    AddRows(block, sums, coarse);
    if (!own) return;
    ++blocks_;
    if (block == 2) Level(14);
    for (std::int32_t level = kFirstSynthesisedLevel; block == 0 && level <= 12; ++level) ScaleLevel(level);
    if (block > 0) ScaleLevel(11 + 2 * block);
}
// NOLINTEND(misc-no-recursion)

void LevelSynthesis::AddRows(std::int32_t block, const std::vector<FoldedSum>& sums,
                             const std::vector<FoldedSum>& coarse) {
    const std::size_t rows = RowsOf(block);
    const auto largest = static_cast<std::size_t>(largestOrder_);
    const auto reserve = [](PackedTable& list, std::size_t size) {
        if (list.size() < size) list.resize(size);
    };
    reserve(scratch_.column, 2 * largest + 4);
    reserve(scratch_.samples, (largest / 16 + 2) * 4 * rows);
    reserve(scratch_.coarse, kCoarseRows * 2 * kClassPeriod);
    reserve(scratch_.values, rows);
    const ThetaRows& theta = ThetaRowsOf(block, largestOrder_);
    const ZfExpansionGrid& grid = tables_->grid;
    for (std::int32_t g = 0; g < grid.Groups(); ++g) {
        const auto group = static_cast<std::size_t>(g);
        HWY_DYNAMIC_DISPATCH(AddGroup)
        ({*waves_, tables_->Bessel()[group], theta, tables_->Weights(block), rows, orders_[group],
          g * grid.groupSize, std::min((g + 1) * grid.groupSize, tables_->lSize), sums, coarse, scratch_});
    }
}

}  // namespace qvre

#endif  // HWY_ONCE
