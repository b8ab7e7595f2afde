#pragma once

#include <map>
#include <string>
#include <vector>

#include "foundation/Words.h"
#include "input/Fluctuation.h"
#include "prepare/thermal/DebyeTable.h"

// The fluctuation document of a request.

namespace qvre {

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
Fluctuation MakeFluctuation(const VibrationRequest& request, const DebyeTable& table);

/// The file appears whole or not at all. Throws ZfError.
void SaveFluctuation(Fluctuation fluctuation, const std::string& path);

}  // namespace qvre
