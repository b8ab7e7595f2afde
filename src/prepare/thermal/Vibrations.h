#pragma once

#include <map>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "input/Fluctuation.h"
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
    std::map<std::string, double> debyeTemperature_K{};  ///< those given; the others come from the table
};

/// Above it no solid is left (tungsten boils at 5800 K); the Debye temperature of diamond is 2230 K.
constexpr double kHighestTemperature_K = 10000.0;

/// Throws ZfError for a temperature below 0 or above kHighestTemperature_K.
void CheckTemperature(double temperature_K);

/// Throws ZfError for a Debye temperature that is not above 0, or above kHighestTemperature_K.
void CheckDebyeTemperature(const std::string& element, double temperature_K);

/// Throws ZfError for a temperature out of range and, under the Debye model, for Debye temperatures out of
/// range, of symbols that are no elements or, where elements are given, of others than those.
void CheckVibrations(const VibrationRequest& request);

/// The document of the request. Only the Debye model lists its elements. Throws ZfError as
/// CheckVibrations, and under the Debye model for no elements, and for one without Debye temperature.
Fluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table);

/// The file appears whole or not at all. Throws ZfError.
void SaveFluctuation(Fluctuation fluctuation, const std::string& path);

}  // namespace qvre
