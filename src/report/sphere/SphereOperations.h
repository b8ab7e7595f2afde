#pragma once

#include <optional>

#include "report/sphere/SphereImage.h"

// What a measurement does to a pattern, and averages. Each result lies on the map of its operand, so the
// operations compose. The modulation (I - I0)/I0 is to be formed last: instrument and surface act on
// intensities.

namespace qvre {

/// Mean over the n-fold rotations about the surface normal and, with a mirror, over their products with the
/// reflection at the plane that holds the normal and the azimuth `mirror` (radians). Throws ZfError for n
/// < 1.
SphereImage SymmetryAverage(const SphereImage& image, int n, std::optional<double> mirror);

/// Mean over the solid angle of a cone of half angle `halfAngle` (radians, in (0, pi/4]) around every
/// direction, the angular acceptance of an analyser. Directions below the surface plane do not count, unless
/// the whole cone is below. A harmonic of degree l is multiplied by (P_{l-1}(c) - P_{l+1}(c))/((2l + 1)(1 -
/// c)), c = cos(halfAngle), where the cone does not cross the surface plane. Throws ZfError.
SphereImage AcceptanceAverage(const SphereImage& image, double halfAngle);

/// The pattern outside the solid, of one calculated for directions inside. `energy` is the kinetic energy
/// inside (the energy of the calculation, above the muffin-tin zero), `innerPotential` the height V0 of the
/// vacuum level above it, both in eV, so that the kinetic energy outside is energy - V0. The momentum along
/// the surface is kept:
///     sin(theta_in) = sin(theta_out) sqrt((energy - V0)/energy),
/// and the intensity per solid angle, at full transmission, is multiplied by
///     dOmega_in/dOmega_out = (energy - V0)/energy cos(theta_out)/cos(theta_in).
/// It vanishes at the horizon; below, where there is no outside, it goes on with the sign of cos(theta_out),
/// which keeps the interpolation at the horizon smooth. Throws ZfError unless 0 <= V0 < energy.
SphereImage Refracted(const SphereImage& image, double energy, double innerPotential);

}  // namespace qvre
