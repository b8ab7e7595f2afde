#pragma once

#include <string>
#include <vector>

#include "prepare/cluster/ClusterRequest.h"
#include "prepare/cluster/EmitterShares.h"
#include "run/InputMaking.h"

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

/// The unit waves of a level and the table of its dipole source.
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

/// Table of the inelastic mean free path of the waves.
std::string MakeMeanFreePathFile(const LossesRequest& request, const std::string& clusterFile,
                                 const std::string& wavesFile, const std::string& output);
double LoadMeanFreePath_m(const std::string& path);

/// Of the elements of the cluster.
std::string MakeFluctuationFile(const VibrationRequest& request, const std::string& clusterFile,
                                const std::string& output);

}  // namespace qvre
