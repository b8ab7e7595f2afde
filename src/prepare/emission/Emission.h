#pragma once

#include <string>
#include <vector>

#include "input/EmittedWave.h"
#include "prepare/atomic/ContinuumWave.h"
#include "prepare/atomic/CoreLevel.h"
#include "prepare/atomic/FreeAtom.h"
#include "prepare/atomic/ScreenedAtom.h"
#include "prepare/emission/DipoleSource.h"

namespace qvre {

/// A core level and the field into which its electron goes.
struct EmissionRequest {
    ScreenedAtom atom;  ///< the orbital is that of the free atom
    CoreLevel level;
    CoreField core = CoreField::kSelfConsistent;
    RadialPotential potential;  ///< of the photoelectron around the emitter
    double radius = 0.0;        ///< bohr: the potential is 0 from here on
    RadialEquation equation = RadialEquation::kSchroedinger;
    double kinetic_eV = 0.0;  ///< where the potential is 0
    double weight = 1.0;      ///< of the intensity
};

struct Emission {
    CoreOrbital orbital;
    DipoleSource source;  ///< rho in bohr^(5/2), the continuum waves being u_l = r R_l of ContinuumWave
};

/// Throws ZfError for a level that the ground state of the atom leaves empty.
void CheckLevel(const EmissionRequest& request);

/// Throws ZfError for an energy out of range (CheckEnergies), and a weight that is not positive.
void CheckSource(double kinetic_eV, double weight);

/// The source that a core level is in the dipole approximation, length form. Throws ZfError as CheckLevel and
/// CheckSource.
Emission CoreLevelEmission(const EmissionRequest& request);

/// The field of a photoelectron that leaves a free atom: that of its orbitals, Latter's -1/r cut at 40 bohr.
/// The cut shifts all phases by one angle, so their differences are those of the Coulomb waves.
void SetFreeAtomField(EmissionRequest& request);

/// Photoionisation cross section in Mb (1e-22 m^2) of a level of the free atom, its photoelectron in the
/// field of its orbitals (J. W. Cooper, Phys. Rev. 128, 681 (1962); J. J. Yeh, I. Lindau, At. Data Nucl. Data
/// Tables 32, 1 (1985)). For N electrons, in atomic units,
///     sigma = (4 pi^2/3) alpha h nu N/(2 l0 + 1) (2k/pi) (l0 rho-^2 + (l0 + 1) rho+^2);
/// 2k/pi is the density of the waves u_l on the energy. 0 for a photon that does not lift the electron out.
/// Throws ZfError as CheckLevel.
double CrossSection_Mb(const ScreenedAtom& atom, CoreField core, const CoreLevel& level, double photon_eV);

/// One wave of l = 0, as strong in all directions: a source like an Auger transition between s levels.
std::vector<EmittedWave> IsotropicEmission(double kinetic_eV, double weight);

/// Kinetic energy inside the crystal, above the muffin-tin zero, in eV and rounded to 0.1 eV, of a level that
/// lies `binding` below the Fermi level, which lies `fermi` above the muffin-tin zero. Throws ZfError when
/// the photon does not lift the electron above the muffin-tin zero.
double KineticEnergyInside(double photon, double binding, double fermi);

/// Writes an emitted-wave file (.xml_emt), which appears whole or not at all. Throws ZfError.
void SaveEmittedWaves(std::vector<EmittedWave> waves, const std::string& path);

}  // namespace qvre
