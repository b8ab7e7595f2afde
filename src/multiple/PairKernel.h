#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "foundation/Vec3.h"
#include "scattering/WaveTranslation.h"

// The waves of eight atoms at a ninth: outgoing waves translated to it as in WaveTranslation.h, with the
// eight side by side and nothing kept between calls. Three things make it faster than the general
// translation:
//
//   * The l sizes are those of atoms, so orders stay small and need no scale.
//   * With X_Ll = i^(L-l) S^m_Ll the coaxial coefficients are symmetric, X_Ll = X_lL, and
//         a_l X_L,l+1 = a_L X_(L+1),l + a_(L-1) X_(L-1),l - a_(l-1) X_L,l-1,
//     so that one triangle serves both. With X_Ll = w_L w_l Z_Ll, w_(L+1) = w_L / a_L, two of the factors
//     become 1. The powers of i are those of the tables, see PairWave; the weights w are applied to the
//     turned waves.
//   * Z is made once for all waves.
//
// All lengths are in units of 1/k. The kernel exists for every instruction set and the best one is taken at
// run time.

namespace qvre {

/// Positions of eight sources.
struct alignas(64) SourceGroup {
    double x[kTranslationPack]{};
    double y[kTranslationPack]{};
    double z[kTranslationPack]{};

    void Set(std::size_t lane, const Vec3& position) {
        x[lane] = position[0];
        y[lane] = position[1];
        z[lane] = position[2];
    }
};

/// What the coaxial coefficients take from m; index 0 stands for L = m.
struct CoaxialWeights {
    std::vector<double> square;  ///< a_L^2, a as in CoaxialTable
    std::vector<double> weight;  ///< w_L, 1 at L = m
    std::vector<double> first;   ///< Z_Lm / (i^L h_L(kR) (i kR)^-m)
};

/// The weights of all m below the largest l size of a table.
std::vector<CoaxialWeights> MakeCoaxialWeights(std::int32_t largestLSize);

/// The two ends of a wave: (-i)^l A(l,m) of the sources, the sign (-1)^l beside the power above being one of
/// the rotations, and the running sum of i^L c(L,M) at the target, a lane a source. Elements at l (l + 1) +
/// m.
struct PairWave {
    const PackedComplex* sources;
    PackedComplex* targets;
};

/// What AddWavesAt needs to know besides the waves.
struct PairSetting {
    const std::vector<CoaxialWeights>* weights = nullptr;
    double damping = 0.0;  ///< the wave of a source is multiplied by exp(-damping kR)
    std::size_t sourceLSize = 0;
    std::size_t targetLSize = 0;
};

/// Scratch of AddWavesAt, for l sizes up to the given one: one a thread.
struct PairScratch {
    static constexpr std::size_t kWavesTogether = 4;

    PairScratch(std::size_t largestLSize, std::size_t waves);

    std::vector<PackedComplex> alpha;                            ///< e^(i m alpha')
    std::vector<PackedComplex> beta;                             ///< 2 e^(i mu beta), 1 at mu = 0
    std::vector<PackedComplex> radial;                           ///< i^L h_L(kR), damped
    std::vector<PackedComplex> coaxial;                          ///< Z^m_Ll, l by l from L = l, of one m
    std::vector<std::size_t> column;                             ///< where l begins in it
    std::vector<MirrorSums> u;                                   ///< of one degree, before and
    std::vector<MirrorSums> v;                                   ///< behind the phases of beta
    std::array<std::vector<MirrorSums>, kWavesTogether> turned;  ///< by (l, m)
    std::array<std::vector<MirrorSums>, kWavesTogether> moved;   ///< by (L, m)
};

/// Adds to the targets of each wave what the eight sources send to `target`. A source that stands at the
/// target, k R < 1e-3, sends nothing.
void AddWavesAt(const Vec3& target, const SourceGroup& group, const PairSetting& setting,
                std::span<const PairWave> waves, PairScratch& scratch);

/// c(L,M) from the sums of AddWavesAt: the lanes added up, and divided by i^L.
void SumLanes(const PackedComplex* targets, std::size_t lSize, std::complex<double>* c);

}  // namespace qvre
