#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace qvre {

/// A potential around a nucleus: r in bohr, result in hartree, 0 outside the sphere.
using RadialPotential = std::function<double(double)>;

constexpr double kHighestEnergy_eV = 1e5;
constexpr std::int32_t kMostPartialWaves = 61;

enum class RadialEquation {
    kSchroedinger,
    /// Mass-velocity and Darwin terms, without the splitting by spin (D. D. Koelling, B. N. Harmon, J. Phys.
    /// C 10, 3107 (1977)): the mass M = 1 + (E - V)/(2 c^2) varies with r. Outside the sphere the wave is
    /// free, with the wave number of that mass.
    kScalarRelativistic,
};

/// What is asked of the radial equation.
struct ContinuumRequest {
    RadialPotential potential;
    double radius = 0.0;     ///< bohr: the potential is 0 from here on
    double energy_eV = 0.0;  ///< kinetic energy where the potential is 0
    std::int32_t lSize = 0;  ///< l = 0 .. lSize - 1
    RadialEquation equation = RadialEquation::kSchroedinger;
    /// Points of ln(r/m) at which P and L are kept, rising; none: no tables. The last may lie beyond the
    /// sphere by up to a thousandth of its radius.
    std::vector<double> tablePoints;
};

/// The regular solutions R_l of the radial equation at one energy, normalised so that
///     R_l(r) = cos(delta_l) j_l(kr) - sin(delta_l) y_l(kr)
/// from the sphere on, with h1_l = j_l + i y_l: an attractive potential has a positive delta_l.
struct ContinuumWave {
    double k = 0.0;             ///< 1/bohr
    double radius = 0.0;        ///< bohr
    std::vector<double> delta;  ///< radians, over l; the branch counts the nodes that the potential draws in
    std::vector<double> r;      ///< bohr, rising from 1e-5 to the sphere
    std::vector<std::vector<double>> u;  ///< one row an l: u_l = r R_l at these points

    /// Rows of an l for the wave inside the atom: p_l with R_l proportional to (r/R)^l p_l, and its slope
    /// dp_l/dlnr.
    std::vector<std::vector<double>> P;
    std::vector<std::vector<double>> L;

    double Outside(std::int32_t l, double at) const;  ///< u_l at the sphere and beyond; r in bohr
};

/// Integrates from 1e-5 bohr to the sphere by Runge-Kutta steps in ln r and matches there to j_l and y_l. The
/// phases are good to 1e-3 degrees. Throws ZfError for a sphere, an energy or an l size out of range.
ContinuumWave SolveContinuum(const ContinuumRequest& request);

/// ln(r/m) at which the integration starts, r = 1e-5 bohr.
double FirstLogRadius();

}  // namespace qvre
