#include "files/RunSettings.h"

#include <gtest/gtest.h>

using namespace qvre;

namespace {

/// "name: value unit" of each setting, a line each.
std::string SettingsOf(const std::string& file) {
    RunSettings settings;
    AddFileSettings(settings, QVRE_EXAMPLES "/" + file);
    std::string text;
    for (const RunSetting& setting : settings) text += setting.name + ": " + SettingText(setting) + "\n";
    return text;
}

}  // namespace

// The figures of the README of the example.
TEST(RunSettings, TellWhatTheFilesOfARunHold) {
    EXPECT_EQ(SettingsOf("gaas001/cluster.xml_cl"),
              "cluster_file: cluster.xml_cl\ncluster_atoms: 148\ncluster_elements: As Ga\n");
    EXPECT_EQ(SettingsOf("gaas001/emitter_s.xml_emt"),
              "emitted_wave_file: emitter_s.xml_emt\nemitted_wave_energies: 1455 eV\n");
    EXPECT_EQ(
        SettingsOf("gaas001/phaseshift.xml_ph"),
        "phase_shift_file: phaseshift.xml_ph\nphase_shift_atoms: As Ga\nphase_shift_energies: 1455 eV\n");
    EXPECT_EQ(SettingsOf("gaas001/fluctuation.xml_flu"),
              "fluctuation_file: fluctuation.xml_flu\nthermal_model: Debye model\ntemperature: 300 K\n"
              "debye_elements: As Ga\ndebye_temperatures: 360 360 K\n");
    EXPECT_EQ(SettingsOf("gaas001/fluctuation_einstein.xml_flu"),
              "fluctuation_file: fluctuation_einstein.xml_flu\nthermal_model: Einstein model\n"
              "temperature: 300 K\n");
    EXPECT_EQ(SettingsOf("gaas001/fluctuation_cluster.xml_flu"),
              "fluctuation_file: fluctuation_cluster.xml_flu\nthermal_model: Uiso of the cluster\n"
              "temperature: 300 K\n");
}
