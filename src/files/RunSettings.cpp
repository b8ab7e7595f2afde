#include "files/RunSettings.h"

#include <fmt/format.h>

#include <array>
#include <filesystem>
#include <set>
#include <utility>

#include "foundation/FileReading.h"
#include "foundation/ZfError.h"
#include "image/ZfDocData.h"
#include "input/Cluster.h"
#include "input/EmittedWave.h"
#include "input/Fluctuation.h"
#include "input/ZfPhaseShiftDocument.h"
#include "scattering/ThermalModels.h"
#include "xml/ZfBarnFile.h"
#include "xml/ZfQBarnFile.h"

namespace qvre {

namespace {

std::string FileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

std::string Joined(const std::vector<std::string>& texts) {
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : " ") + text;
    return joined;
}

std::vector<double> Sorted(const std::set<double>& values) {
    return {values.begin(), values.end()};
}

void AddScatteredWave(RunSettings& settings, const std::string& path) {
    ZfScatteringData data;
    LoadScatteredWaveRecords(data, path);
    settings.push_back({"scattered_wave_file", FileName(path), ""});
    AddWaveSettings(settings, data);
}

void AddCluster(RunSettings& settings, const std::string& path) {
    Cluster cluster;
    ZfLoadCluster(cluster, path);
    std::vector<double> atoms;
    std::set<std::string> elements;
    for (const Structure& structure : cluster.structures) {
        atoms.push_back(static_cast<double>(structure.atoms.size()));
        for (const ClusterAtom& atom : structure.atoms) elements.insert(atom.atom);
    }
    settings.push_back({"cluster_file", FileName(path), ""});
    settings.push_back({"cluster_atoms", std::move(atoms), ""});
    settings.push_back({"cluster_elements", Joined({elements.begin(), elements.end()}), ""});
}

void AddEmittedWaves(RunSettings& settings, const std::string& path) {
    std::vector<EmittedWave> waves;
    ZfLoadEmittedWave(waves, path);
    if (waves.empty()) throw ZfError("there are no emitted waves in it");
    std::vector<double> energies;
    energies.reserve(waves.size());
    for (const EmittedWave& wave : waves) energies.push_back(wave.Ek);
    settings.push_back({"emitted_wave_file", FileName(path), ""});
    settings.push_back({"emitted_wave_energies", std::move(energies), "eV"});
}

void AddPhaseShifts(RunSettings& settings, const std::string& path) {
    ZfPhaseShiftDocument document;
    ZfLoadPhaseShift(document, path);
    if (document.records.empty()) throw ZfError("there are no phase shifts in it");
    std::set<double> energies;
    std::set<std::string> atoms;
    for (const PhaseShiftRecord& record : document.records) {
        energies.insert(record.Ek_eV);
        atoms.insert(record.AtomName);
    }
    settings.push_back({"phase_shift_file", FileName(path), ""});
    settings.push_back({"phase_shift_atoms", Joined({atoms.begin(), atoms.end()}), ""});
    settings.push_back({"phase_shift_energies", Sorted(energies), "eV"});
}

std::string ThermalModelName(const Fluctuation& fluctuation) {
    switch (ThermalModelOf(fluctuation)) {
        case ThermalModel::kEinstein:
            return "Einstein model";
        case ThermalModel::kDebye:
            return "Debye model";
        case ThermalModel::kNone:
        case ThermalModel::kCluster:
            break;
    }
    return "Uiso of the cluster";
}

void AddFluctuation(RunSettings& settings, const std::string& path) {
    Fluctuation fluctuation;
    ZfBarnFile file(path, "r");
    if (!ExchangeFluctuation(file, fluctuation, "DocFluctuation"))
        throw ZfError("there is no fluctuation in it");
    settings.push_back({"fluctuation_file", FileName(path), ""});
    settings.push_back({"thermal_model", ThermalModelName(fluctuation), ""});
    settings.push_back({"temperature", std::vector{fluctuation.Temperature_K_}, "K"});
    if (fluctuation.DebyeElement_.empty()) return;
    settings.push_back({"debye_elements", Joined(fluctuation.DebyeElement_), ""});
    settings.push_back({"debye_temperatures", fluctuation.DebyeTemperature_K_, "K"});
}

using Adder = void (*)(RunSettings&, const std::string&);

Adder AdderFor(const std::string& path) {
    constexpr std::array<std::pair<const char*, Adder>, 6> kAdders = {{{".xml_sf", AddScatteredWave},
                                                                       {".xml_cl", AddCluster},
                                                                       {".xyz", AddCluster},
                                                                       {".xml_emt", AddEmittedWaves},
                                                                       {".xml_ph", AddPhaseShifts},
                                                                       {".xml_flu", AddFluctuation}}};
    const std::string extension = std::filesystem::path(path).extension().string();
    for (const auto& [known, adder] : kAdders)
        if (extension == known) return adder;
    throw ZfError("a file of a run ends in .xml_sf, .xml_cl, .xyz, .xml_emt, .xml_ph or .xml_flu");
}

}  // namespace

std::string SettingText(const RunSetting& setting) {
    std::string text;
    if (const auto* words = std::get_if<std::string>(&setting.value)) {
        text = *words;
    } else {
        for (const double number : std::get<std::vector<double>>(setting.value))
            text += fmt::format("{}{:.9g}", text.empty() ? "" : " ", number);
    }
    return setting.unit.empty() ? text : text + " " + setting.unit;
}

void AddImageSettings(RunSettings& settings, const std::string& imagePath) {
    RequireFile(imagePath);
    Naming(imagePath, [&] {
        ZfDocData document;
        ZfQBarnFile file(imagePath, "r");
        if (!document.SaveLoad(file)) throw ZfError("it is no image file that can be read");
        for (const auto& [key, texts] : document.infoString) settings.push_back({key, Joined(texts), ""});
        for (const auto& [key, numbers] : document.infoValue) settings.push_back({key, numbers, ""});
    });
}

void AddFileSettings(RunSettings& settings, const std::string& path) {
    RequireFile(path);
    Naming(path, [&] { AdderFor(path)(settings, path); });
}

void AddWaveSettings(RunSettings& settings, const ZfScatteringData& data) {
    std::set<double> energies;
    std::vector<double> atoms;
    double largestL = 0.0;
    for (const ZfScatteringRecord& record : data.ListScatteringData) {
        energies.insert(record.ListScatterer.Ek_eV);
        atoms.push_back(static_cast<double>(record.ListScatterer.electrons.size()));
        largestL = std::max<double>(largestL, record.ListScatterer.LargestL());
    }
    settings.push_back({"method", WordFor(static_cast<ScatteringMethod>(data.Version), "unknown"), ""});
    settings.push_back({"EPS", std::vector{data.EPS}, ""});
    settings.push_back({"passes", std::vector{static_cast<double>(data.MultiScattering)}, ""});
    settings.push_back({"records", std::vector{static_cast<double>(data.ListScatteringData.size())}, ""});
    settings.push_back({"kinetic_energies", Sorted(energies), "eV"});
    settings.push_back({"atoms", std::move(atoms), ""});
    settings.push_back({"largest_l_size", std::vector{largestL}, ""});
}

void LoadScatteredWaveRecords(ZfScatteringData& data, const std::string& path) {
    RequireFile(path);
    Naming(path, [&] {
        ZfBarnFile file(path, "r");
        if (!data.Exchange(file)) throw ZfError("it is no scattered wave (.xml_sf)");
        if (data.ListScatteringData.empty()) throw ZfError("there are no records in it");
        for (const ZfScatteringRecord& record : data.ListScatteringData)
            if (record.ListScatterer.electrons.empty())
                throw ZfError("a record has no atoms: the file may be cut short");
    });
}

}  // namespace qvre
