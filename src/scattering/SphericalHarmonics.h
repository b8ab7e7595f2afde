#pragma once

#include <cstdint>

#include "input/LmTable.h"

// Spherical harmonics, orthonormal on the unit sphere and with the Condon-Shortley phase:
//     Y_lm(theta, phi) = sqrt((2l+1)/(4 pi) (l-m)!/(l+m)!) P_lm(cos theta) exp(i m phi),
//     Y_l,-m = (-1)^m conj(Y_lm),
// as in Jackson, Classical Electrodynamics, 3rd ed., section 3.5. They are made of a theta factor, normalised
// to 1 over sin(theta) d theta, and a phi factor exp(i m phi) / sqrt(2 pi). Angles are in radians. A table of
// size n covers l = 0 .. n-1 and m = -l .. l. All throw ZfError for a size that no table can have.

/// N(l, m) = sqrt((2l+1)/2 (l-|m|)!/(l+|m|)!), with the factor (-1)^m on positive m.
void LegendreNormTable(ZfLmDoubleTable& table, std::int32_t n);

/// Associated Legendre functions without norm and sign; P(l, -m) = P(l, m).
void LegendreRaw(ZfLmDoubleTable& table, std::int32_t n, double theta);

/// Normalised theta factors. `norm` is the caller's cache, rebuilt here when smaller than n: threads may
/// share it only once it has its full size.
void LegendreTable(ZfLmDoubleTable& norm, ZfLmDoubleTable& result, std::int32_t n, double theta);

/// Phi factors E(l, m), the same for every l.
void PhiTable(ZfLmComplexTable& result, std::int32_t n, double phi);

/// All Y_lm of one direction; `norm` as above.
void HarmonicTable(ZfLmDoubleTable& norm, ZfLmComplexTable& result, std::int32_t n, double theta, double phi);
