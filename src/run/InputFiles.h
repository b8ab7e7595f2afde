#pragma once

#include <optional>
#include <string>
#include <vector>

#include "prepare/attenuation/MeanFreePath.h"
#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/EmitterShares.h"
#include "prepare/emission/PhotonEnergy.h"
#include "prepare/phases/PhaseShifts.h"
#include "prepare/thermal/Vibrations.h"

// The files of an input set, made from requests and from each other. Each function writes one file, whole or
// not at all, and returns what the user should know of it, in lines. They throw ZfError.

namespace qvre {

std::string CopyReadyFile(const std::string& path, const std::string& output);

/// Writes the cluster and, as a second file, the table of its emitters.
std::string MakeClusterFile(const ClusterRequest& request, const std::string& output,
                            const std::string& sharesOutput);

/// The table of emitters beside a ready cluster, or what the cluster alone tells. Throws ZfError when the
/// table belongs to another one.
std::vector<EmitterShare> SharesOfReady(const std::string& path, const Cluster& cluster);

/// Copies a ready cluster and writes the table of its emitters.
std::string CopyReadyCluster(const std::string& path, const std::string& output,
                             const std::string& sharesOutput);

/// What is emitted; emitter and field are those of the cluster.
struct WavesRequest {
    bool isotropic = false;    ///< a source of l = 0 instead of a level
    EmissionRequest emission;  ///< level and weight
    PhotoelectronEnergy energy;
    std::vector<LightVector> light;  ///< that lifts the level: its parts
};

/// The kinetic energy in eV; from a photon with the binding energy of the table unless one is given.
double KineticEnergyOf(const PhotoelectronEnergy& energy, const ScreenedAtom& atom, const CoreLevel& level);

/// The unit waves of a level and the table of its dipole source. The photoelectron feels the same field at
/// the emitter as anywhere else: `crystal` has its settings.
std::string MakeUnitWaves(const WavesRequest& request, const PhaseShiftRequest& crystal,
                          const std::string& clusterFile, const std::string& wavesFile,
                          const std::string& dipoleFile);

/// The waves of an isotropic source.
std::string MakeIsotropicWaves(const WavesRequest& request, const std::string& output);

/// The waves that light lifts which stays with the sample.
std::string MakeWavesUnderLight(const std::string& dipoleFile, const std::vector<LightVector>& light,
                                const std::string& output);

/// Of the atoms of the cluster, at the energies of the waves.
std::string MakePhaseShiftFile(const PhaseShiftRequest& request, const std::string& clusterFile,
                               const std::string& wavesFile, const std::string& output);

/// The solid in which electrons lose energy.
struct LossesRequest {
    MeanFreePathRequest path;
    std::optional<CrystalCell> crystal;  ///< none: the density is that of the cluster
    double fermi_eV = 0.0;               ///< Fermi level above the muffin-tin zero
};

/// Table of the inelastic mean free path of the waves.
std::string MakeMeanFreePathFile(const LossesRequest& request, const std::string& clusterFile,
                                 const std::string& wavesFile, const std::string& output);
double LoadMeanFreePath_m(const std::string& path);

/// Of the elements of the cluster.
std::string MakeFluctuationFile(const VibrationRequest& request, const std::string& clusterFile,
                                const std::string& output);

}  // namespace qvre
