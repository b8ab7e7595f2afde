#include "recipe/RecipeInformation.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>
#include <vector>

#include "experiment/Light.h"
#include "prepare/cluster/ClusterRequest.h"
#include "recipe/RecipeInputs.h"

namespace qvre {

namespace {

/// A value as a line of a table shows it: "2p", "0 0 1", "Cu=343 O=500".
// NOLINTNEXTLINE(misc-no-recursion): values nest, no deeper than the parser lets them
std::string ValueText(const toml::node& node) {
    if (const auto* text = node.as_string()) return text->get();
    if (const auto* number = node.as_floating_point()) return fmt::format("{}", number->get());
    std::vector<std::string> parts;
    if (const toml::array* list = node.as_array()) {
        for (const toml::node& entry : *list) parts.push_back(ValueText(entry));
        return fmt::format("{}", fmt::join(parts, " "));
    }
    if (const toml::table* table = node.as_table()) {
        for (const auto& [key, value] : *table)
            parts.push_back(fmt::format("{}={}", key.str(), ValueText(value)));
        return fmt::format("{}", fmt::join(parts, " "));
    }
    std::ostringstream text;
    node.visit([&text](const auto& value) { text << value; });
    return text.str();
}

bool HasReadyFile(const toml::table& settings, const char* section) {
    return settings[section]["file"].is_string();
}

bool NamesLight(const toml::table& settings) {
    for (const char* key : kLightKeys)
        if (settings["emission"][key]) return true;
    return false;
}

}  // namespace

std::map<std::string, std::string> InformationOf(const toml::table& settings, ScatteringMethod method) {
    std::map<std::string, std::string> information;
    if (!HasReadyFile(settings, "cluster")) {
        const ClusterRequest usual;
        information["cluster.surface"] = fmt::format("{}", fmt::join(usual.surface, " "));
        if (!settings["cluster"]["emitters"])
            information["cluster.emitter-layer"] = fmt::format("{}", fmt::join(usual.layers, " "));
    }
    if (!HasReadyFile(settings, "emission") && !settings["emission"]["isotropic"].value_or(false)) {
        information["light.frame"] = WordFor(LightFrame::kSample);
        if (!NamesLight(settings)) information["emission.polarisation"] = "0 0 1";
    }
    if (!HasReadyFile(settings, "thermal"))
        information["thermal.temperature"] = fmt::format("{:g}", VibrationRequest().temperature_K);
    for (const char* section : {"cluster", "emission", "light", "phases", "thermal", "scattering", "image"})
        if (const toml::table* table = settings[section].as_table())
            for (const auto& [key, value] : *table)
                information[fmt::format("{}.{}", section, key.str())] = ValueText(value);
    information["scattering.method"] = WordFor(method);
    return information;
}

}  // namespace qvre
