#pragma once

#include <optional>

#include "report/sphere/SphereImage.h"

namespace qvre {

/// What stands between the emission inside a crystal and the counts of an analyser. Angles in degrees,
/// energies in eV.
struct Instrument {
    double acceptance = 0.0;               ///< half angle of the cone that the analyser takes in; 0: none
    int fold = 1;                          ///< order of the rotation axis that domains have together
    std::optional<double> mirror;          ///< azimuth of a mirror plane that they have together
    std::optional<double> innerPotential;  ///< height of the vacuum level above the muffin-tin zero
    double energy = 0.0;                   ///< kinetic, of the calculation; with the inner potential

    bool ChangesIntensity() const { return acceptance > 0.0 || fold > 1 || mirror || innerPotential; }
};

/// Throws ZfError for settings out of their ranges, and unless inner potential and energy come together.
void CheckInstrument(const Instrument& instrument);

/// An intensity as the instrument sees it, in the order of the experiment: refraction at the surface, mean
/// over the domains, mean over the cone of acceptance. The modulation is to be formed afterwards.
SphereImage Counted(SphereImage intensity, const Instrument& instrument);

}  // namespace qvre
