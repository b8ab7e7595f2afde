#pragma once

#include <vector>

#include "prepare/atomic/ContinuumWave.h"
#include "prepare/atomic/ScreenedAtom.h"

namespace qvre {

/// A bound state of an electron in a central field, atomic units.
struct CoreOrbital {
    int n = 0;
    int l = 0;
    double energy = 0.0;    ///< hartree, below 0
    std::vector<double> r;  ///< bohr, equidistant in ln r
    std::vector<double> P;  ///< r R(r), bohr^(-1/2), positive close to the nucleus; the integral of P^2 is 1
};

/// The field in which the core orbitals of an atom are calculated: that of its charges with Slater's exchange
/// potential -(3/2)(3 rho/pi)^(1/3) (J. C. Slater, Phys. Rev. 81, 385 (1951)), nowhere weaker than the -1/r
/// of the ion that an electron leaves behind (R. Latter, Phys. Rev. 99, 510 (1955)).
double SlaterField(const ScreenedAtom& atom, double r);

/// What is asked for: the state n, l of an electron in a potential that is -Z/r at the nucleus and not weaker
/// than -1/r far out.
struct BoundState {
    RadialPotential field;
    int n = 1;  ///< up to 7
    int l = 0;
    RadialEquation equation = RadialEquation::kSchroedinger;
    double step = 0.004;       ///< of ln r; the error of an energy goes with its fourth power
    double precision = 4e-16;  ///< of the energy, over the square of the nuclear charge
    double guess = 0.0;        ///< hartree: an energy that may be near; 0: none
};

/// The radii of an orbital, bohr: from 1e-7 on, with larger n further.
std::vector<double> LogarithmicRadii(double step, int n);

/// Throws ZfError when the field does not bind the state by 0.005 hartree.
CoreOrbital BoundOrbital(const BoundState& state);

/// The integral over r of P, r and the function u, given at the radii of the orbital.
double DipoleIntegral(const CoreOrbital& orbital, const std::vector<double>& u);

/// The same with u_l of a continuum wave: bohr^(5/2).
double DipoleIntegral(const CoreOrbital& orbital, const ContinuumWave& wave, int l);

}  // namespace qvre
