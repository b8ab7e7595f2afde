#pragma once

#include <array>
#include <complex>
#include <cstdint>
#include <vector>

#include "foundation/Words.h"
#include "input/LmTable.h"

namespace qvre {

/// One incoherent part of the light: its complex polarisation vector, |eps|^2 being the part of the
/// intensity.
using LightVector = std::array<std::complex<double>, 3>;

/// How circular light turns. Left: anticlockwise for an observer towards whom it travels, of positive
/// helicity (M. Born, E. Wolf, Principles of Optics).
enum class Handedness : std::uint8_t { kLeft, kRight };

template <>
inline constexpr auto kWords<Handedness> = std::to_array<Word<Handedness>>({{"left", Handedness::kLeft},
                                                                            {"right", Handedness::kRight}});

// Parts of light of unit intensity. Directions have any length but 0, otherwise these throw ZfError.

/// Linear, along a direction.
std::vector<LightVector> LinearLight(const std::array<double, 3>& along);
/// Unpolarised, travelling along a direction: two perpendicular linear parts of half the intensity each.
/// Light along z has the parts x and y.
std::vector<LightVector> UnpolarisedLight(const std::array<double, 3>& travel);
/// Circular, travelling along a direction: with e1, e2 and the direction right-handed, (e1 + i e2)/sqrt(2) is
/// left and (e1 - i e2)/sqrt(2) right.
std::vector<LightVector> CircularLight(const std::array<double, 3>& travel, Handedness handedness);

/// Radial integrals and phases of the two partial waves l0 - 1 and l0 + 1 into which a dipole lifts a level
/// of l0; for l0 = 0 the lower one has no part.
struct DipoleChannels {
    double Beta() const;  ///< asymmetry of the emission by linear light, 1 + beta P2 (Cooper and Zare)

    int l0 = 0;
    std::array<double, 2> rho{};    ///< radial integrals of l0 - 1 and l0 + 1, in one unit
    std::array<double, 2> delta{};  ///< their phases, radian
};

/// The wave that the light lifts from the sublevel m0:
///     A_lm = exp(i delta_l) rho_l <Y_lm| eps.r |Y_l0,m0>, r of unit length,
/// without the (-i)^l of the far field (J. Cooper, R. N. Zare, J. Chem. Phys. 48, 942 (1968)).
ZfLmComplexTable DipoleWave(const DipoleChannels& channels, const LightVector& light, int m0);

}  // namespace qvre
