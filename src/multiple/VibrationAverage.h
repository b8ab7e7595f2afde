#pragma once

#include <complex>
#include <vector>

// Vibrations of an atom, independent of those of its neighbours. Its t matrix, averaged over displacements of
// mean square U along each axis, is
//
//     t(theta) exp(-k^2 U (1 - cos theta)),      t(theta) = sum of (2l+1) t_l P_l(cos theta),
//
// and so, for an isotropic U, again a t matrix of the same form, with complex phase shifts (J. B. Pendry, Low
// Energy Electron Diffraction, Academic Press 1974, on temperature-dependent phase shifts).

namespace qvre {

/// The averaged t_l, of the same l size; x is k^2 U. Throws ZfError for one that is negative, no number, or
/// far above those of solids.
std::vector<std::complex<double>> VibrationAverage(const std::vector<std::complex<double>>& t, double x);

}  // namespace qvre
