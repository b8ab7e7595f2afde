#pragma once

#include <optional>
#include <vector>

#include "input/Cluster.h"
#include "input/Fluctuation.h"
#include "prepare/attenuation/MeanFreePath.h"
#include "prepare/emission/Emission.h"
#include "prepare/emission/PhotonEnergy.h"
#include "prepare/phases/PhaseShifts.h"
#include "prepare/thermal/Vibrations.h"

// The inputs of a calculation made from requests and from each other, with the tables of the program. The
// functions throw ZfError.

namespace qvre {

/// What is emitted; emitter and field are those of the cluster.
struct WavesRequest {
    bool isotropic = false;    ///< a source of l = 0 instead of a level
    EmissionRequest emission;  ///< level and weight
    PhotoelectronEnergy energy;
    std::vector<LightVector> light;  ///< that lifts the level: its parts
};

/// The kinetic energy in eV; from a photon with the binding energy of the table unless one is given.
double KineticEnergyOf(const PhotoelectronEnergy& energy, const ScreenedAtom& atom, const CoreLevel& level);

/// The level as a source. The photoelectron feels the same field at the emitter as anywhere else: `crystal`
/// has its settings.
DipoleSource MakeDipoleSource(const WavesRequest& request, const PhaseShiftRequest& crystal,
                              const Cluster& cluster);

/// Of the atoms of the cluster.
PhaseShiftResult MakePhaseShifts(PhaseShiftRequest request, const Cluster& cluster,
                                 const std::vector<double>& energies_eV);

/// The solid in which electrons lose energy.
struct LossesRequest {
    MeanFreePathRequest path;
    std::optional<CrystalCell> crystal;  ///< none: the density is that of the cluster
    double fermi_eV = 0.0;               ///< Fermi level above the muffin-tin zero
};

/// The density of the solid, as far as the mean free path depends on it.
SolidDensity DensityFor(const LossesRequest& request, const Cluster& cluster);

/// Of the elements of the cluster.
Fluctuation MakeFluctuationOf(const VibrationRequest& request, const Cluster& cluster);

}  // namespace qvre
