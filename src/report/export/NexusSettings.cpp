#include "report/export/NexusSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace qvre {

namespace {

std::string FieldName(const std::string& name, std::set<std::string>& used) {
    std::string field = name;
    std::replace_if(
        field.begin(), field.end(), [](char c) { return c == '/' || c == '.' || c == '\0'; }, '_');
    const std::string stem = field;
    for (int number = 2; !used.insert(field).second; ++number) field = fmt::format("{}_{}", stem, number);
    return field;
}

Hdf5Node Field(const Hdf5Node& group, const std::string& name, const RunSetting& setting) {
    if (const auto* text = std::get_if<std::string>(&setting.value)) return group.Dataset(name, *text);
    const auto& numbers = std::get<std::vector<double>>(setting.value);
    if (numbers.size() == 1) return group.Dataset(name, numbers.front());
    return group.Dataset(name, {numbers.size()}, numbers);
}

}  // namespace

void WriteNexusSettings(const Hdf5Node& entry, const RunSettings& settings) {
    const Hdf5Node group = entry.Group("settings", "NXparameters");
    std::set<std::string> used;
    for (const RunSetting& setting : settings) {
        const Hdf5Node field = Field(group, FieldName(setting.name, used), setting);
        if (!setting.unit.empty()) field.Attribute("units", setting.unit);
    }
}

}  // namespace qvre
