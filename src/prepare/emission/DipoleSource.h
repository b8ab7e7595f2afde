#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <string>
#include <vector>

#include "input/EmittedWave.h"
#include "prepare/emission/DipoleEmission.h"

// A core level as the source of photoelectrons before any light is chosen. Scattering is linear in the
// emitted wave, and light can only lift the level into partial waves (l0 +- 1, m): these unit waves are
// scattered once, and each light combines them.

namespace qvre {

struct DipoleSource {
    DipoleChannels channels;
    double kinetic_eV = 0.0;
    double weight = 1.0;  ///< of the intensity: without scatterers its average over all directions
};

/// The unit waves of a level: one coefficient 1 each, at (l, m) for l = l0 - 1 and l0 + 1, m rising from -l.
/// 4 l0 + 2 of them, 3 for l0 = 0.
std::vector<EmittedWave> UnitWaves(const DipoleSource& source);

/// Amplitudes with which light lifts the level into its unit waves.
class DipoleTransitions {
public:
    explicit DipoleTransitions(const DipoleSource& source);

    std::size_t UnitWaveCount() const { return units_; }
    std::size_t SublevelCount() const { return sublevels_; }

    /// The amplitude of the unit wave `unit` out of the sublevel m0 = sublevel - l0.
    std::complex<double> Amplitude(const LightVector& light, std::size_t sublevel, std::size_t unit) const {
        const std::array<std::complex<double>, 3>& d = dipoles_[sublevel * units_ + unit];
        return light[0] * d[0] + light[1] * d[1] + light[2] * d[2];
    }

private:
    std::size_t units_ = 0;
    std::size_t sublevels_ = 0;
    std::vector<std::array<std::complex<double>, 3>> dipoles_;  // for light along x, y and z
};

/// The emitted waves under a light that stays with the sample: for each of its parts one of each sublevel
/// m = -l0 .. l0. The sum of |A_lm|^2 over all waves is 4 pi times the weight and |light|^2.
std::vector<EmittedWave> WavesUnder(const DipoleSource& source, const std::vector<LightVector>& light);

// A comma-separated table with a row for each final l. Errors are ZfError.
void SaveDipoleSource(const DipoleSource& source, const std::string& path);
DipoleSource LoadDipoleSource(const std::string& path);

}  // namespace qvre
