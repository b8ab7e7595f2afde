#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "scattering/HarmonicBasis.h"

// Vector kernels of the expansion: one source at many points, and the azimuthal sums of the samples. Each
// exists for every instruction set of the machine's family and the best one is taken at run time.

namespace qvre {

/// Widest vector of any instruction set, in numbers.
constexpr std::size_t kSourceLanes = 8;

/// Arrays of points and samples are padded: a kernel reads and writes up to this many elements beyond the
/// count.
constexpr std::size_t kKernelPadding = 32;

/// Arguments up to which the vector sine and cosine keep their errors: VectorMath-inl.h.
constexpr double kLargestKernelPhase = 39000.0;

/// Directions from the origin, as unit vectors.
struct KernelDirections {
    const double* x;
    const double* y;
    const double* z;
    std::size_t count;
};

/// An outgoing wave, sum of A h1_l(k rho) Y_lm, around a position.
struct KernelSource {
    std::vector<HarmonicPair> pairs;
    std::int32_t L = 0;
    double k = 0.0;        ///< 1/m
    double position[3]{};  ///< m
};

/// Adds the wave of a source at the points radius * direction. The points must not be near the source: k rho
/// of at least SmallestKernelX(L), and at most kLargestKernelPhase; elsewhere the result is meaningless.
void AddOutgoingWave(const KernelSource& source, const KernelDirections& directions, double radius,
                     double* re, double* im);

/// h1_l is summed by its upward recurrence, in which j_l is as exact as the whole h1_l needs as long as y_l
/// is in range.
double SmallestKernelX(std::int32_t L);

/// Adds amplitude * exp(i q.(radius * direction - position)), q in 1/m.
void AddPlaneWave(std::complex<double> amplitude, const double* q, const double* position,
                  const KernelDirections& directions, double radius, double* re, double* im);

/// Azimuthal sums of one row of samples: for m = 0 .. size-1,
///     cosRe[m] + i cosIm[m] = sum over k of (re[k] + i im[k]) cosines[k * stride + m], and likewise with the
///     sines.
/// `stride` and the results are padded to a multiple of kSourceLanes.
struct AzimuthalSums {
    double* cosRe;
    double* cosIm;
    double* sinRe;
    double* sinIm;
};
void SumAzimuth(const double* re, const double* im, std::size_t count, const double* cosines,
                const double* sines, std::size_t stride, const AzimuthalSums& sums);

}  // namespace qvre
