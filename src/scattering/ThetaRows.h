#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Theta factors of the rows on which the expansion samples a wave, as its synthesis and its projection take
// them. Rows theta and pi - theta mirror each other, so only those up to the equator stand here.

namespace qvre {

/// Rows that stand side by side.
constexpr std::size_t kRowTile = 4;

/// Lattice of the first block of rows: theta = pi i / kFirstLattice. It has all the rows of the levels up
/// to 12.
constexpr std::int32_t kFirstLattice = 64;

/// Half rows of a block: i = 1 .. 32 of the first lattice (block 0); i = 1, 3, .. of the lattice twice as
/// fine as the one of the block before.
std::size_t RowsOf(std::int32_t block);

/// Theta factors |Theta_LM| of Y_LM = Theta_LM exp(i M phi) / sqrt(2 pi), normalised to 1 over sin(theta) d
/// theta, for L < `orders`; positive near theta = 0.
struct ThetaRows {
    /// Of order M in a tile: the factors of the tile's rows side by side, for L = M, M + 2, ... first and
    /// then for L = M + 1, M + 3, ...
    const double* Tile(std::int32_t M, std::size_t tile) const { return values.data() + TileBegin(M, tile); }
    std::size_t TileBegin(std::int32_t M, std::size_t tile) const {
        return first[static_cast<std::size_t>(M)] + tile * Degrees(M) * kRowTile;
    }
    std::size_t Degrees(std::int32_t M) const { return static_cast<std::size_t>(orders - M); }
    std::size_t OddBegin(std::int32_t M) const { return (Degrees(M) + 1) / 2 * kRowTile; }

    std::int32_t orders = 0;
    std::vector<double> values;
    std::vector<std::size_t> first;
    std::vector<std::int32_t> limit;  ///< by tile: from this M on, the factors vanish to rounding
};

/// The rows of a block, for at least `orders` degrees; built when first asked for, from any thread, and kept.
const ThetaRows& ThetaRowsOf(std::int32_t block, std::int32_t orders);

/// Weights of the projection for all (l, m >= 0) of an l size, at (l (l + 1) / 2 + m) * rows + row:
/// sin(theta) Theta_lm, twice for a row that stands for its mirror image too.
std::vector<double> ProjectionWeights(std::int32_t block, std::int32_t lSize);

/// Blocks that there are: enough for level 16.
constexpr std::int32_t kRowBlocks = 3;

}  // namespace qvre
