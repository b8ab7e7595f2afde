#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "scattering/ExpansionTables.h"
#include "scattering/PackedTable.h"

// The integrals of the levels of an expansion, without samples. The quadrature over the sphere is linear in
// the wave, and a wave of outside sources is on every sphere psi = sum of c(L,M) j_L(kr) Y_LM. With
//
//     F_M(theta) = sum over L of c(L,M) j_L(kr) Theta_LM(theta)
//
// the sum over a row of N equidistant azimuths that start at phi_0 is, exactly,
//
//     sum over k of psi exp(-i m phi_k) = N / sqrt(2 pi) sum over j of F_(m+jN)(theta) exp(i j N phi_0),
//
// the wave's higher orders folded onto m: the integral with all its error, on which the decision to stop
// hangs. On the lattice exp(i j N phi_0) is 1, or (-1)^j where a level adds the centres of cells. Eight
// targets stand side by side, as in the translation.

namespace qvre {

constexpr std::int32_t kFirstSynthesisedLevel = 4;
constexpr std::int32_t kLastSynthesisedLevel = 16;

struct FoldedSum;

struct OrderSlot {
    std::int32_t M;
    const PackedComplex* rows[2];  ///< F in the rows, by parity of L + M
};

struct LevelScratch {
    PackedTable column;                      ///< c j_L of M and -M, by L
    PackedTable samples;                     ///< F of the orders of a class, by order, parity and row
    PackedTable coarse;                      ///< F folded with the class period, by residue, parity and row
    PackedTable values;                      ///< one sum's folded F, by row
    std::vector<OrderSlot> slots;            ///< what stands in `samples` or `coarse`
    std::vector<const PackedComplex*> plus;  ///< the rows of the orders that fold onto one m with this sign
    std::vector<const PackedComplex*> minus;
};

/// The levels of eight waves. An object serves one thread and keeps its scratch.
class LevelSynthesis {
public:
    /// Starts on the tables c(L,M) kOrderScale^L of eight waves. `orders` tells for each group up to which
    /// order they count on its sphere. Tables and waves must stay as they are.
    void Start(const ExpansionTables& tables, const PackedTable& waves,
               const std::vector<std::int32_t>& orders);

    /// Whether a level can be had: beyond 14 only for waves whose orders do not fold onto the wanted m.
    bool Serves(std::int32_t level) const;

    /// Integral over all points up to a level from kFirstSynthesisedLevel on, not divided by j_l, as
    /// ZfSphereExpansion::LevelIntegral has it. Levels are computed in blocks, when first asked for.
    const PackedTable& Level(std::int32_t level);

private:
    void AddBlock(std::int32_t block, bool own, bool fine);
    void AddRows(std::int32_t block, const std::vector<FoldedSum>& sums,
                 const std::vector<FoldedSum>& coarse);
    void ScaleLevel(std::int32_t level);

    const ExpansionTables* tables_ = nullptr;
    const PackedTable* waves_ = nullptr;
    std::vector<std::int32_t> orders_;
    std::int32_t largestOrder_ = 0;
    std::int32_t blocks_ = 0;      ///< blocks of rows that are in `levels_`
    std::int32_t fineBlocks_ = 0;  ///< and in `fine_`
    std::array<PackedTable, kLastSynthesisedLevel + 1> levels_;
    PackedTable fine_;  ///< sums over all rows of the blocks, folded only as the even levels beyond 12 do
    LevelScratch scratch_;
};

/// Squared norms of the results of eight waves and of their change.
struct PackedChange {
    double size[kTranslationPack];
    double difference[kTranslationPack];
};

/// One step of LevelRefinement for eight waves: `result` is of the level before, and becomes the new one.
void RefineLevel(const PackedTable& integral, const PackedTable& before, const ZfExpansionGrid& grid,
                 PackedTable& result, PackedChange& change);

}  // namespace qvre
