#pragma once

#include <map>
#include <string>
#include <vector>

#include "foundation/Constants.h"
#include "foundation/Words.h"
#include "input/Fluctuation.h"
#include "input/ZfDebye.h"
#include "prepare/thermal/DebyeTable.h"

// The fluctuation document of a request.

namespace qvre {

enum class VibrationModel { kDebye, kEinstein, kCluster };

template <>
inline constexpr auto kWords<VibrationModel> =
    std::to_array<Word<VibrationModel>>({{"debye", VibrationModel::kDebye},
                                         {"einstein", VibrationModel::kEinstein},
                                         {"cluster", VibrationModel::kCluster}});

struct VibrationRequest {
    double temperature_K = 300.0;
    VibrationModel model = VibrationModel::kDebye;
    std::vector<std::string> elements{};                 ///< symbols, in the order of the document
    std::map<std::string, double> debyeTemperature_K{};  ///< those of the formula of a run
    /// Mean square displacements by element at this temperature, square angstrom. Elements with neither of
    /// the two come from the table.
    std::map<std::string, double> uiso_angstrom2{};
};

/// B = 8 pi^2 U.
constexpr double kBOfUiso = 8.0 * kPi * kPi;

/// No solid has more (K at room temperature: 0.14): what lies above is rather a B.
constexpr double kLargestUiso_angstrom2 = 0.3;
constexpr double kLeastUiso_angstrom2 = 1e-5;

/// Above it no solid is left (tungsten boils at 5800 K); the Debye temperature of diamond is 2230 K.
constexpr double kHighestTemperature_K = 10000.0;

/// Throws ZfError for a temperature below 0 or above kHighestTemperature_K.
void CheckTemperature(double temperature_K);

/// Throws ZfError for a Debye temperature that is not above 0, or above kHighestTemperature_K.
void CheckDebyeTemperature(const std::string& element, double temperature_K);

/// Throws ZfError for a temperature out of range and for displacements under another model than Debye's.
/// Under it, for Debye temperatures and displacements out of range, both for one element, displacements at
/// 0 K, symbols that are no elements and, where elements are given, others than those.
void CheckVibrations(const VibrationRequest& request);

/// The document of the request. Only the Debye model lists its elements. A run knows the limit of high
/// temperature alone, so displacements, also those that the whole model makes of the table, become the Debye
/// temperatures that give them at this temperature. Throws ZfError as CheckVibrations, and under the Debye
/// model for no elements, and for one without Debye temperature.
Fluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table, const ZfDebye& weights);

/// The file appears whole or not at all. Throws ZfError.
void SaveFluctuation(Fluctuation fluctuation, const std::string& path);

}  // namespace qvre
