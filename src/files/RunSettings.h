#pragma once

#include <string>
#include <variant>
#include <vector>

#include "scattering/ZfScatteringData.h"

namespace qvre {

/// One fact about a run.
struct RunSetting {
    std::string name;
    std::variant<std::vector<double>, std::string> value;
    std::string unit;  ///< empty: none
};

using RunSettings = std::vector<RunSetting>;

/// Value and unit as text: numbers with up to 9 digits, separated by blanks.
std::string SettingText(const RunSetting& setting);

/// Adds what an image file (.xml_img) tells in its tables of information. Throws ZfError.
void AddImageSettings(RunSettings& settings, const std::string& imagePath);

/// Adds what a file of the run tells, by the extension of its path: scattered wave (.xml_sf), cluster
/// (.xml_cl, .xyz), emitted waves (.xml_emt), phase shifts (.xml_ph), fluctuation (.xml_flu). Throws ZfError
/// with the name of the file.
void AddFileSettings(RunSettings& settings, const std::string& path);

/// The settings that a scattered wave keeps: method, EPS, energies, number of atoms, l sizes.
void AddWaveSettings(RunSettings& settings, const ZfScatteringData& data);

/// A scattered-wave file (.xml_sf) with at least one record, and atoms in each. Throws ZfError with the name
/// of the file.
void LoadScatteredWaveRecords(ZfScatteringData& data, const std::string& path);

}  // namespace qvre
