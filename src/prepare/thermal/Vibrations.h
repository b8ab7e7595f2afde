#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "input/ZfCluster.h"
#include "input/ZfDebye.h"
#include "input/ZfFluctuation.h"
#include "prepare/thermal/DebyeTable.h"

// The fluctuation document, and the mean square displacements U (along one axis) that a run makes of it.

enum class VibrationModel { Debye, Einstein, Cluster };

template <>
inline constexpr auto kWords<VibrationModel> =
    std::to_array<Word<VibrationModel>>({{"debye", VibrationModel::Debye},
                                         {"einstein", VibrationModel::Einstein},
                                         {"cluster", VibrationModel::Cluster}});

struct VibrationRequest {
    double temperature_K = 300.0;
    VibrationModel model = VibrationModel::Debye;
    std::vector<std::string> elements{};                 ///< symbols, in the order of the document
    std::map<std::string, double> debyeTemperature_K{};  ///< those given; the others come from the table
};

/// Throws ZfError for a temperature below 0 and, under the Debye model, for Debye temperatures not above 0,
/// of symbols that are no elements or, where elements are given, of others than those.
void CheckVibrations(const VibrationRequest& request);

/// The document of the request. Only the Debye model lists its elements. Throws ZfError as
/// CheckVibrations, and under the Debye model for no elements, and for one without Debye temperature.
ZfFluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table);

/// The file appears whole or not at all. Throws ZfError.
void SaveFluctuation(ZfFluctuation fluctuation, const std::string& path);

/// Symbols in the order of first appearance.
std::vector<std::string> ElementsOf(const ZfCluster& cluster);

/// Atomic number of a symbol. Throws ZfError, and says so, for one that is none.
std::int32_t AtomicNumberOf(const std::string& element);

/// The table that ships as "AtomicWeight.txt". Throws ZfError.
ZfDebye LoadAtomicWeights(const std::string& path);

/// U in m^2 that a run gives an atom of the element, 0 where it keeps the one of the cluster. Throws ZfError
/// where the run fails.
double ModelUiso(const ZfFluctuation& fluctuation, const ZfDebye& weights, const std::string& element);

/// U in m^2 by the whole Debye model, zero-point motion included:
///     U = 3 hbar^2 / (M kB theta) (phi(x)/x + 1/4),  x = theta/T,  phi(x) = 1/x int_0^x t/(e^t - 1) dt
/// (B. E. Warren, X-Ray Diffraction, section 11.3). A run takes its limit of small x, 3 hbar^2 / (M kB theta
/// x), which is too small by the factor 1 + x^2/36 - ...
double DebyeIntegralUiso(double temperature_K, std::int32_t atomicNumber, double debyeTemperature_K,
                         const ZfDebye& weights);
