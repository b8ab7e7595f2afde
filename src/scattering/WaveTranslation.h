#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/PackedTable.h"

// Translation of spherical waves. With d the displacement from the target to the source, R = |d|, a wave
// around the source is a regular one around the target,
//
//     sum over l, m of A(l,m) f_l(k |r - d|) Y_lm(r - d) = sum over L, M of c(L,M) j_L(k |r|) Y_LM(r),
//
// f = h1 for an outgoing wave (r < R), f = j for a regular one (all r). It is done in three steps: turn so
// that the source stands on the z axis, translate along z, which keeps m, and turn back:
//
//     c(L,M) = e^(-iM alpha') sum_mu D^L_muM e^(i mu beta) sum_m D^L_mum sum_l S^m_Ll
//                  sum_mu D^l_mum e^(-i mu beta) sum_m' D^l_mum' e^(i m' alpha') A(l,m')
//
// with (beta, alpha) the direction of d, alpha' = alpha + pi/2, and D = d(pi/2) the Wigner matrices of a
// quarter turn: only phases depend on the direction. S is made by recurrence in l at fixed m (N. A. Gumerov,
// R. Duraiswami, SIAM J. Sci. Comput. 25, 1344 (2003)) from
//
//     S^m_Lm = sqrt((2m+1)!! / (2m)!!) sqrt((2L+1) (L+m)! / (L-m)!) f_L(kR) / (kR)^m.
//
// Eight pairs of source and target are translated side by side, each with its own displacement, wave number
// and table; the kernel exists for every instruction set and the best one is taken at run time.

namespace qvre {

/// Where the pairs of a pack stand to each other, and the radial functions f_L(kR). Places not set hold no
/// wave.
struct TranslationGeometry {
    void Clear();
    /// Displacement in metres from the target to the source, not zero; k in 1/m.
    void Set(std::size_t lane, const double* displacement, std::complex<double> k);
    void Remove(std::size_t lane);
    /// The radial functions of outgoing waves for L = 0 .. count - 1, by their upward recurrence. Such waves
    /// may have any l size and order; with j in place of h1, for regular ones, the recurrence of S loses
    /// digits where l lies far above both L and kR.
    void CalculateRadial(std::int32_t count);

    PackedComplex kR;
    PackedComplex inverse;              ///< 1 / kR; 0: a place not set
    PackedComplex alpha;                ///< e^(i alpha')
    PackedComplex beta;                 ///< e^(i beta)
    std::vector<PackedComplex> radial;  ///< f_L(kR) kOrderScale^L
};

/// Scratch of AddTranslated: one a thread, kept between calls.
struct TranslationScratch {
    std::vector<PackedComplex> alpha;    ///< e^(i m alpha')
    std::vector<PackedComplex> beta;     ///< 2 e^(i mu beta), 1 at mu = 0
    std::vector<MirrorSums> u;           ///< of one degree, before and
    std::vector<MirrorSums> v;           ///< behind the phases of beta
    std::vector<MirrorSums> turned;      ///< by (m, l): the sources as they stand on the z axis
    std::vector<MirrorSums> moved;       ///< by (L, m): the same around the targets
    std::vector<MirrorSums> sums;        ///< by L, of one m
    std::vector<PackedComplex> columns;  ///< S^m_Ll by L, of some l
    std::vector<PackedComplex>
        power;               ///< by L, in the real parts: sum over M of the squares around the targets
    std::size_t orders = 0;  ///< m that the translation leaves
    std::size_t movedStride = 0;
    std::size_t columnSize = 0;
};

/// Adds the waves of the sources, of l size `lSize`, to the tables of the targets up to the order `order`,
/// that is for L < order; these are c(L,M) kOrderScale^L. The geometry needs order + lSize - 1 radial
/// functions.
void AddTranslated(const PackedTable& sources, std::int32_t lSize, const TranslationGeometry& geometry,
                   std::int32_t order, PackedTable& targets, TranslationScratch& scratch);

/// The same in two steps, between which `scratch.power` tells how much each order L < order holds: the last
/// step, which costs most, may then take fewer orders.
void MoveWaves(const PackedTable& sources, std::int32_t lSize, const TranslationGeometry& geometry,
               std::int32_t order, TranslationScratch& scratch);
void AddMoved(std::int32_t order, PackedTable& targets, TranslationScratch& scratch);

/// j_l(x) scale^l for l = 0 .. count - 1, by the downward recurrence (Miller; DLMF 3.6(iii)).
std::vector<std::complex<double>> ScaledBessel(std::complex<double> x, std::int32_t count, double scale);

}  // namespace qvre
