#pragma once

#include <complex>

#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ZfFreeElectron.h"

namespace qvre {

/// The wave inside one atom, made of the radial solutions of its phase-shift record:
///     psi(r) = sum_lm b(l,m) (r/R)^l p_l(ln r) Y_lm(r),    R = exp(last value of LnX), in metres.
/// Row l of `P` holds p_l at the points of `LnX`, row l of `L` its slope dp_l/dlnr; their scale is free,
/// since r^l p_l solves a homogeneous equation. Between two points p_l is the cubic with those values and
/// slopes (Hermite), off by up to (k r h)^4/384 of itself on a grid of step h; below the first point it is
/// constant, as the regular solution is where r -> 0.
struct RadialWave {
    const RadialTables* tables = nullptr;  ///< not owned
    ZfLmComplexTable b;
    mutable ZfLmDoubleTable legendreNorm;  ///< cache of the evaluation, of full size
};

/// R in metres; 0 without a grid.
double AtomRadius(const RadialTables& tables);

/// Scales the radial solutions so that they join the field around the atom at R: `outside` holds its outgoing
/// and incoming tables A and B. With x = kr, u_l = (r/R)^l p_l, and F = A h1_l + B h2_l of one (l,m),
///     b = (F u_l + F' u_l') / (u_l^2 + u_l'^2)   at r = R, primes being d/dx.
/// Where the phase shifts are those of the solutions, value and slope of every component are both continuous.
/// Where they are not quite (a cluster wave is a truncated sum over scattering paths), b is the best fit to
/// both: the value alone would leave b undetermined at a node of u_l.
///
/// Throws ZfError ("Please calculate phase shift.") without tables for every l of `outside`, or with tables
/// that are no solution on a rising grid. The tables must outlive the result.
RadialWave JoinRadialWave(const RadialTables& tables, const ZfFreeElectron& outside);

}  // namespace qvre

/// The wave at a point around the atom's centre; exactly 0 at the centre. Throws ZfError at R and beyond.
std::complex<double> RadialWaveAtPoint(const qvre::RadialWave& wave, double r, double theta, double phi);
