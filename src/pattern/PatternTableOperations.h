#pragma once

#include <cstdint>
#include <vector>

#include "foundation/Matrices.h"

// Operations on tables of a pair of atoms: intensities with the distance along the first index (line i) and
// the polar angle along the second. The last angle is the forward direction z = cos(theta) = 1 of a grid
// equal in z, row j of n standing at z = 2j/(n-1) - 1; the masks and the weight of type 4 count on that grid.
//
// With a the amplitude of the direct and b that of the scattered wave, summed over the emitted waves,
//     D = sum |a|^2,  S = sum |b|^2,
//     T = sum |a + b|^2   = D + S + 2 Re sum conj(a) b,
//     Q = sum |i a + b|^2 = D + S + 2 Im sum conj(a) b,
// so T and Q hold the two quadratures of the interference; whatever is told of T below holds for Q as well.
// A division by zero gives an infinity or not-a-number where nothing else is said.

namespace qvre {

/// chi = (T - D) / D, the modulation function of photoelectron diffraction (D. P. Woodruff, A. M. Bradshaw,
/// Rep. Prog. Phys. 57, 1029 (1994)); 0 where D is 0.
ZfLDoubleMatrix ModulationFunction(const ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct);

/// (T - D - S) / (2 sqrt(D) sqrt(S)): of one emitted wave the cosine of the phase between the two waves, for
/// Q the sine; of several, these times their degree of coherence (M. Born, E. Wolf, Principles of Optics,
/// 7th ed., section 7.2). 0 where one of the waves vanishes.
ZfLDoubleMatrix InterferencePhase(const ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct,
                                  const ZfLDoubleMatrix& scattered);

/// sqrt(x^2 + y^2), the envelope of the two quadratures.
ZfLDoubleMatrix Modulus(const ZfLDoubleMatrix& x, const ZfLDoubleMatrix& y);

/// Replaces T by its mean over a Gaussian distribution of wave numbers, of standard deviation `sigma` (1/m).
///
/// The phase of the interference runs as k r (1 - cos theta), with the path difference of the pair, and
/// everything else varies slowly; so the mean keeps D + S and damps the interference,
///     T -> D + S + (T - D - S) exp(-(sigma r (1 - cos theta))^2 / 2)
/// (the characteristic function of the Gaussian; Born and Wolf, section 7.5, on the coherence length).
void SmoothOverWaveNumber(ZfLDoubleMatrix& total, const ZfLDoubleMatrix& direct,
                          const ZfLDoubleMatrix& scattered, const ZfLDoubleMatrix& distances,
                          const ZfLDoubleMatrix& cosines, double sigma);

/// z of the first local minimum of each line, from the last angle down: where the forward maximum ends. 0,
/// the equator, for a line without one.
std::vector<double> FirstMinima(const ZfLDoubleMatrix& table);

}  // namespace qvre

/// 1 - sqrt(T / T_last), the amplitude against the one at the last angle of the line.
ZfLDoubleMatrix CompareToLast(const ZfLDoubleMatrix& total);

/// Multiplies each line by a factor, by type
///     0: r / angstrom   against the 1/r of the wave that reaches the scatterer
///     1: 1
///     2: 1 / sqrt(sum of squares)
///     3: 1 / first local maximum from the last angle; infinite if there is none
///     4: 1 / sum of (w value)^2,  w = exp(-(n-1-j)^2 d^2),  d = 4/(n-1)
///     5: sqrt(r / angstrom)
/// and returns the factors. Distances are in metres. Throws ZfError for another type.
std::vector<double> Normalise(ZfLDoubleMatrix& table, const ZfLDoubleMatrix& distances, std::int32_t type);

/// Multiplies each line by a window that is 1 at the last angle and ends at the start value z0 of the line,
/// with x = pi (1 - z) / (1 - z0); values below z0 become 0. By type
///     0: no window, 1: cos(x/2), 2: (1 + cos x)/2, 3: 0.54 + 0.46 cos x
/// (cosine, Hann and Hamming; F. J. Harris, Proc. IEEE 66, 51 (1978)). Throws ZfError for another type.
void ApplyMask(ZfLDoubleMatrix& table, std::int32_t type, const std::vector<double>& starts);
