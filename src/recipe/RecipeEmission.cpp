#include <fmt/format.h>

#include <array>
#include <cctype>
#include <optional>
#include <vector>

#include "foundation/ProgramFile.h"
#include "recipe/RecipeInputs.h"

// The emission of a recipe: what `qvre emit` makes of a cluster.

namespace qvre {

namespace {

/// The energy of a laboratory source, "Al", or a number.
double PhotonEnergy(RecipeTable& section) {
    const std::string text = section.HasWord("photon") ? section.Text("photon", "") : "";
    const bool isWord = !text.empty() && std::isalpha(static_cast<unsigned char>(text.front())) != 0;
    if (!isWord) return section.Number("photon", RecipeUnit::kElectronVolt, 0.0);
    return section.Made("photon", [&] { return ParsePhotonEnergy(text); });
}

PhotoelectronEnergy ReadEnergy(RecipeTable& section) {
    PhotoelectronEnergy energy;
    if (section.Has("kinetic") == section.Has("photon"))
        section.Fail("kinetic", "give either kinetic or photon, an energy");
    const char* given = section.Has("kinetic") ? "kinetic" : "photon";
    energy.kinetic_eV = section.Number("kinetic", RecipeUnit::kElectronVolt, energy.kinetic_eV);
    energy.photon_eV = PhotonEnergy(section);
    if (!(energy.kinetic_eV + energy.photon_eV > 0.0)) section.Fail(given, "has to be above 0");
    energy.binding_eV = section.Number("binding", RecipeUnit::kElectronVolt);
    energy.fermi_eV = section.Number("fermi", RecipeUnit::kElectronVolt, energy.fermi_eV);
    section.Made(given, [&] { CheckEnergy(energy); });
    return energy;
}

std::vector<LightVector> ReadLight(RecipeTable& section) {
    const auto linear = section.Vector("polarisation");
    const auto unpolarised = section.Vector("unpolarised-along");
    const auto along = section.Vector("along");
    const bool isCircular = section.Has("circular");
    if (linear.has_value() + unpolarised.has_value() + isCircular > 1)
        section.Fail("polarisation", "give one of polarisation, unpolarised-along and circular");
    if (isCircular != along.has_value()) section.Fail("circular", "circular and along belong together");
    if (unpolarised) return section.Made("unpolarised-along", [&] { return UnpolarisedLight(*unpolarised); });
    if (isCircular) {
        const Handedness handedness = section.Word("circular", Handedness::kLeft);
        return section.Made("along", [&] { return CircularLight(*along, handedness); });
    }
    const std::array<double, 3> normal = {0.0, 0.0, 1.0};
    return section.Made("polarisation", [&] { return LinearLight(linear.value_or(normal)); });
}

/// What would be refused only when the waves are made.
void CheckWaves(const RecipeTable& section, const WavesRequest& request, const std::string& emitter) {
    EmissionRequest emission = request.emission;
    if (!request.isotropic) {
        emission.atom = ScreeningTable(ProgramFile("screening_dhfs.csv")).Find(emitter);
        section.Made("level", [&] { CheckLevel(emission); });
    }
    section.Made(request.energy.photon_eV > 0.0 ? "photon" : "kinetic", [&] {
        CheckSource(KineticEnergyOf(request.energy, emission.atom, emission.level), emission.weight);
    });
}

}  // namespace

LightFrame ReadLightFrame(RecipeTable recipe) {
    RecipeTable section = recipe.Section("light");
    const LightFrame frame = section.Word("frame", LightFrame::kSample);
    section.RefuseUnread();
    return frame;
}

void RefuseLight(RecipeTable recipe, const std::string& source) {
    const RecipeTable section = recipe.Section("light");
    if (section.Exists()) section.Fail("", source + " is emitted without light: leave the section out");
}

double KineticEnergyOf(const WavesRequest& request, const ClusterFacts& cluster) {
    if (request.isotropic) return request.energy.kinetic_eV;
    const ScreenedAtom atom = ScreeningTable(ProgramFile("screening_dhfs.csv")).Find(cluster.emitter);
    return KineticEnergyOf(request.energy, atom, request.emission.level);
}

WavesRequest ReadWavesRequest(RecipeTable section, const ClusterFacts& cluster) {
    WavesRequest request;
    EmissionRequest& emission = request.emission;
    emission.weight = section.Number("weight", RecipeUnit::kNone, emission.weight);
    request.isotropic = section.Flag("isotropic", request.isotropic);
    if (request.isotropic) {
        request.energy.kinetic_eV = section.Number("kinetic", RecipeUnit::kElectronVolt, 0.0);
        if (!(request.energy.kinetic_eV > 0.0))
            section.Fail("kinetic", "an isotropic source needs a kinetic energy above 0");
    } else {
        const std::string level = section.Text("level", "");
        if (level.empty()) section.Fail("level", "give the core level, such as \"2p\"");
        emission.level = section.Made("level", [&] { return ParseCoreLevel(level); });
        emission.core = section.Word("core", emission.core);
        request.energy = ReadEnergy(section);
        request.light = ReadLight(section);
    }
    section.RefuseUnread();
    CheckWaves(section, request, cluster.emitter);
    return request;
}

}  // namespace qvre
